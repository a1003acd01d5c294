/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/* What the modules that serve a device of the device tree share. */
#ifndef TREE_H
#define TREE_H

#include <linux/mod_devicetable.h>
#include <linux/of.h>

/* Whether the tree has a device that matches and is not disabled. */
static inline bool tree_has_device(const struct of_device_id *matches)
{
	struct device_node *node;

	for_each_matching_node(node, matches)
	{
		if (of_device_is_available(node)) {
			of_node_put(node);
			return true;
		}
	}
	return false;
}

#endif
