// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* The simulated chain's pins as a GPIO chip. Line n is enum sim_line n. */
#include <linux/gpio/driver.h>
#include <linux/module.h>
#include <linux/version.h>

#include "sim_board.h"

static const char *const names[] = {
	[SIM_TCK] = "sim-tck",
	[SIM_TMS] = "sim-tms",
	[SIM_TDI] = "sim-tdi",
	[SIM_TDO] = "sim-tdo",
};

static int get_direction(struct gpio_chip *chip, unsigned int line)
{
	return line == SIM_TDO ? GPIO_LINE_DIRECTION_IN : GPIO_LINE_DIRECTION_OUT;
}

/* The directions are those of the chain's pins and never change. */
static int direction_input(struct gpio_chip *chip, unsigned int line)
{
	return line == SIM_TDO ? 0 : -EPERM;
}

static int get(struct gpio_chip *chip, unsigned int line)
{
	int level;

	mutex_lock(&sim_lock);
	level = sim_chain_read(sim_chain, line);
	mutex_unlock(&sim_lock);
	return level;
}

static int set(struct gpio_chip *chip, unsigned int line, int level)
{
	mutex_lock(&sim_lock);
	sim_chain_write(sim_chain, line, level);
	mutex_unlock(&sim_lock);
	return 0;
}

#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 17, 0)
#define set_in_chip set
#else
/* Before 6.17 setting a line could not fail. */
static void set_in_chip(struct gpio_chip *chip, unsigned int line, int level)
{
	set(chip, line, level);
}
#endif

static int direction_output(struct gpio_chip *chip, unsigned int line, int level)
{
	if (line == SIM_TDO)
		return -EPERM;
	return set(chip, line, level);
}

static struct gpio_chip sim_chip = {
	.label = "jtag_sim",
	.owner = THIS_MODULE,
	.get_direction = get_direction,
	.direction_input = direction_input,
	.direction_output = direction_output,
	.get = get,
	.set = set_in_chip,
	.ngpio = ARRAY_SIZE(names),
	.names = names,
	.can_sleep = true,
};

int sim_chip_add(int base)
{
	sim_chip.base = base;
	return gpiochip_add_data(&sim_chip, NULL);
}

void sim_chip_remove(void)
{
	gpiochip_remove(&sim_chip);
}
