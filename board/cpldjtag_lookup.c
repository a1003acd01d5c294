// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* Lines by a chip's label and offsets, or by their names, for a board without a device tree. */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/gpio/machine.h>
#include <linux/kernel.h>
#include <linux/limits.h>
#include <linux/module.h>
#include <linux/slab.h>
#include <linux/string.h>

#include "cpldjtag_internal.h"

static char *lines;
module_param(lines, charp, 0444);
MODULE_PARM_DESC(lines, "the lines of TCK,TMS,TDI,TDO: CHIP:N,N,N,N or their names");

/* In an entry, an offset that stands for "the key is the name of a line". */
#define NAMED U16_MAX

/* An entry for each signal, in their order, and the end. */
static struct gpiod_lookup_table table = {
	.table = {{.con_id = "tck"}, {.con_id = "tms"}, {.con_id = "tdi"}, {.con_id = "tdo"}, {}},
};

/* What the keys point into. */
static char *keys;

/* Reads an entry, whose chip is null if it is a name. */
static int parse_entry(struct gpiod_lookup *entry, const char *chip, const char *text)
{
	entry->key = chip ?: text;
	entry->chip_hwnum = NAMED;
	if (!text || !*text)
		return -EINVAL;
	if (chip && (kstrtou16(text, 10, &entry->chip_hwnum) || entry->chip_hwnum == NAMED))
		return -EINVAL;
	return 0;
}

static int parse(char *text)
{
	char *chip = NULL, *colon = strrchr(text, ':');
	size_t i;

	if (colon) {
		*colon = 0;
		chip = text;
		text = colon + 1;
		if (!*chip)
			return -EINVAL;
	}
	for (i = 0; i < CPLDJTAG_SIGNALS; i++) {
		if (parse_entry(&table.table[i], chip, strsep(&text, ",")))
			return -EINVAL;
	}
	return text ? -EINVAL : 0;
}

static bool have_entries_in_common(void)
{
	const struct gpiod_lookup *one, *other;

	for (one = table.table; one->key; one++) {
		for (other = table.table; other < one; other++) {
			if (one->chip_hwnum == other->chip_hwnum && !strcmp(one->key, other->key))
				return true;
		}
	}
	return false;
}

const char *cpldjtag_lookup_text(void)
{
	return lines;
}

static int read_lines(void)
{
	if (parse(keys)) {
		pr_err("lines=%s: not CHIP:N,N,N,N nor the names of four lines\n", lines);
		return -EINVAL;
	}
	if (have_entries_in_common()) {
		pr_err("lines=%s: two signals are on one line\n", lines);
		return -EINVAL;
	}
	return 0;
}

int cpldjtag_lookup_add(const char *device)
{
	int error;

	keys = kstrdup(lines, GFP_KERNEL);
	if (!keys)
		return -ENOMEM;
	error = read_lines();
	if (error) {
		kfree(keys);
		keys = NULL;
		return error;
	}
	table.dev_id = device;
	gpiod_add_lookup_table(&table);
	return 0;
}

void cpldjtag_lookup_remove(void)
{
	/* There may have been none to add. */
	if (!keys)
		return;
	gpiod_remove_lookup_table(&table);
	kfree(keys);
	keys = NULL;
}
