// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* Lines by a device of the device tree. docs/bindings/ has the binding. */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/mod_devicetable.h>
#include <linux/module.h>
#include <linux/of.h>
#include <linux/platform_device.h>

#include "cpldjtag_internal.h"
#include "tree.h"

static const struct of_device_id matches[] = {
	{.compatible = "quorlan,cpldjtag"},
	{},
};
MODULE_DEVICE_TABLE(of, matches);

/* The chip and the offset of a signal's line; false if the tree does not say. */
static bool find_line(struct device_node *node, enum cpldjtag_signal signal,
		      struct of_phandle_args *line)
{
	char property[] = "xxx-gpios";

	memcpy(property, cpldjtag_signal_names[signal], 3);
	if (of_parse_phandle_with_args(node, property, "#gpio-cells", 0, line))
		return false;
	/* Only compared. */
	of_node_put(line->np);
	return line->args_count > 0;
}

/* gpiolib itself may take a line that stands twice in the tree for one that is to be shared. */
static bool are_on_one_line(struct device_node *node, enum cpldjtag_signal one,
			    enum cpldjtag_signal other)
{
	struct of_phandle_args a, b;

	return find_line(node, one, &a) && find_line(node, other, &b) && a.np == b.np &&
	       a.args[0] == b.args[0];
}

static int check_lines(struct device *dev)
{
	enum cpldjtag_signal one, other;

	for (one = 0; one < CPLDJTAG_SIGNALS; one++) {
		for (other = one + 1; other < CPLDJTAG_SIGNALS; other++) {
			if (!are_on_one_line(dev->of_node, one, other))
				continue;
			dev_err(dev, "%s-gpios and %s-gpios are one line\n",
				cpldjtag_signal_names[one], cpldjtag_signal_names[other]);
			return -EINVAL;
		}
	}
	return 0;
}

static int probe(struct platform_device *device)
{
	struct device *dev = &device->dev;
	int error;

	error = check_lines(dev);
	return error ?: cpldjtag_start(dev);
}

static struct platform_driver driver = {
	.probe = probe,
	.driver = {.name = "cpldjtag", .of_match_table = matches},
};

bool cpldjtag_tree_has_device(void)
{
	return tree_has_device(matches);
}

int cpldjtag_tree_add(void)
{
	return platform_driver_register(&driver);
}

void cpldjtag_tree_remove(void)
{
	platform_driver_unregister(&driver);
}
