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
	return sim_chain_read(sim_chain, line);
}

static bool rises(unsigned int line, int level)
{
	return line == SIM_TCK && level;
}

static __always_inline void write_line(unsigned int line, int level)
{
	unsigned long flags;

	if (!rises(line, level) && sim_chain_write_level(sim_chain, line, level))
		return;
	raw_spin_lock_irqsave(&sim_lock, flags);
	sim_chain_write(sim_chain, line, level);
	raw_spin_unlock_irqrestore(&sim_lock, flags);
}

#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 17, 0)
static noinline int set(struct gpio_chip *chip, unsigned int line, int level)
{
	write_line(line, level);
	return 0;
}
#else
/* Before 6.17 setting a line could not fail. */
static noinline void set(struct gpio_chip *chip, unsigned int line, int level)
{
	write_line(line, level);
}
#endif

static int direction_output(struct gpio_chip *chip, unsigned int line, int level)
{
	if (line == SIM_TDO)
		return -EPERM;
	set(chip, line, level);
	return 0;
}

static struct gpio_chip sim_chip = {
	.label = "jtag_sim",
	.owner = THIS_MODULE,
	.get_direction = get_direction,
	.direction_input = direction_input,
	.direction_output = direction_output,
	.get = get,
	.set = set,
	.ngpio = ARRAY_SIZE(names),
	.names = names,
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
