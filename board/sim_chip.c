// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* The simulated chain's pins as a GPIO chip. Line n is enum sim_line n. */
#include <linux/gpio/driver.h>
#include <linux/mod_devicetable.h>
#include <linux/module.h>
#include <linux/of.h>
#include <linux/platform_device.h>
#include <linux/version.h>

#include "sim_board.h"
#include "tree.h"

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

/* ---- in the device tree */

static const struct of_device_id matches[] = {
	{.compatible = "quorlan,jtag-sim"},
	{},
};
MODULE_DEVICE_TABLE(of, matches);

static int probe(struct platform_device *device)
{
	if (sim_chip.parent) {
		dev_err(&device->dev, "there is one chain, and another device has it\n");
		return -EBUSY;
	}
	sim_chip.parent = &device->dev;
	return devm_gpiochip_add_data(&device->dev, &sim_chip, NULL);
}

/* The device keeps the chip until the module goes. */
static struct platform_driver driver = {
	.probe = probe,
	.driver = {.name = "jtag_sim", .of_match_table = matches, .suppress_bind_attrs = true},
};

/* ---- */

/* Whether the chip is a device's of the tree; else it has none. */
static bool is_in_tree;

int sim_chip_add(int base)
{
	sim_chip.base = base;
	is_in_tree = tree_has_device(matches);
	return is_in_tree ? platform_driver_register(&driver) : gpiochip_add_data(&sim_chip, NULL);
}

void sim_chip_remove(void)
{
	if (is_in_tree)
		platform_driver_unregister(&driver);
	else
		gpiochip_remove(&sim_chip);
}
