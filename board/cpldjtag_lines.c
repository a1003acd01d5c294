// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* The four JTAG lines: taken when a device is served, and given back when it goes. */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/gpio/consumer.h>
#include <linux/gpio/driver.h>
#include <linux/kernel.h>
#include <linux/string.h>
#include <linux/sysfs.h>
#include <linux/version.h>

#include "cpldjtag_internal.h"

const char *const cpldjtag_signal_names[] = {
	[CPLDJTAG_TCK] = "tck",
	[CPLDJTAG_TMS] = "tms",
	[CPLDJTAG_TDI] = "tdi",
	[CPLDJTAG_TDO] = "tdo",
};

static const char *const labels[] = {
	[CPLDJTAG_TCK] = "jtag-tck",
	[CPLDJTAG_TMS] = "jtag-tms",
	[CPLDJTAG_TDI] = "jtag-tdi",
	[CPLDJTAG_TDO] = "jtag-tdo",
};

struct cpldjtag_line cpldjtag_lines[CPLDJTAG_SIGNALS];

/* For people: the GPIO number of the parameters, or CHIP:OFFSET. */
static char places[CPLDJTAG_SIGNALS][64];

static int request_number(enum cpldjtag_signal signal, struct gpio_desc **desc)
{
	u32 number;
	int error;

	error = cpldjtag_number_request(signal, labels[signal], &number, desc);
	if (!error)
		snprintf(places[signal], sizeof(places[signal]), "%u", number);
	return error;
}

static int refuse(struct device *dev, enum cpldjtag_signal signal, int error, const char *why)
{
	const char *name = cpldjtag_signal_names[signal];

	/* Told at all, because gpiolib says the same of a line that its chip does not have. */
	if (error == -EPROBE_DEFER)
		dev_info_once(dev, "%s-gpios: %s\n", name, why);
	if (dev->of_node)
		return dev_err_probe(dev, error, "%s-gpios: %s\n", name, why);
	if (cpldjtag_numbers_given())
		pr_err("%s=: %s: error %d\n", name, why, error);
	else
		pr_err("%s of lines=%s: %s: error %d\n", name, cpldjtag_lookup_text(), why, error);
	return error;
}

static const char *why_not_found(int error)
{
	switch (error) {
	case -ENOENT:
		return "the line is missing";
	case -EPROBE_DEFER:
		return "waiting for a chip that has the line";
	case -ENODEV:
		return "there is no such chip or line";
	case -EINVAL:
		return "the chip has no such line";
	case -EBUSY:
		return "the line is in use";
	default:
		return "the line is not available";
	}
}

static int find_line_of(struct device *dev, enum cpldjtag_signal signal, struct gpio_desc **desc)
{
	int error;

	/* Nothing is driven before the line is known to be a usable one. */
	*desc = gpiod_get(dev, cpldjtag_signal_names[signal], GPIOD_ASIS);
	error = PTR_ERR_OR_ZERO(*desc);
	/* Without a tree nobody would try again later. */
	if (error == -EPROBE_DEFER && !dev->of_node)
		error = -ENODEV;
	return error ? refuse(dev, signal, error, why_not_found(error)) : 0;
}

/* TMS and TDI rest high, as their pull-ups would have them. */
static int set_direction(struct device *dev, enum cpldjtag_signal signal, struct gpio_desc *desc)
{
	int error;

	if (gpiod_is_active_low(desc))
		return refuse(
			dev, signal, -EINVAL,
			"active-low, but a JTAG line is not inverted; flag it as active-high");
	if (signal == CPLDJTAG_TDO) {
		error = gpiod_direction_input(desc);
		return error ? refuse(dev, signal, error, "the line cannot be an input") : 0;
	}
	error = gpiod_direction_output(desc, signal != CPLDJTAG_TCK);
	return error ? refuse(dev, signal, error, "the line cannot be an output") : 0;
}

static unsigned int offset_of(const struct gpio_desc *desc)
{
	return desc_to_gpio(desc) - gpiod_to_chip(desc)->base;
}

static int request_line_of(struct device *dev, enum cpldjtag_signal signal, struct gpio_desc **desc)
{
	int error;

	error = find_line_of(dev, signal, desc);
	if (error)
		return error;
	error = set_direction(dev, signal, *desc);
	if (error) {
		gpiod_put(*desc);
		return error;
	}
	gpiod_set_consumer_name(*desc, labels[signal]);
	snprintf(places[signal], sizeof(places[signal]), "%s:%u", gpiod_to_chip(*desc)->label,
		 offset_of(*desc));
	return 0;
}

/* ---- ways */

/* The device tree may say that a line is open-drain, which gpiolib makes up where the chip cannot.
 */
static bool has_flags(const struct cpldjtag_line *line)
{
	return gpiod_is_active_low(line->desc) ||
	       gpiochip_line_is_open_drain(line->chip, line->offset) ||
	       gpiochip_line_is_open_source(line->chip, line->offset);
}

/* Whether the chip goes when the driver of its device does, and not before. */
static bool goes_with_device(const struct gpio_chip *chip)
{
	const struct device *parent = chip->parent;

	return parent && parent->links.status == DL_DEV_DRIVER_BOUND &&
	       (!chip->owner || chip->owner == parent->driver->owner);
}

/*
 * Holds the chip for as long as the driver of @dev has that: should the driver of the chip's device
 * leave it, which takes the chip away, then it waits until that of @dev has left first. A driver
 * that is still probing waits for nobody should it fail. Sets @held, and returns 0 or a negative
 * error code.
 */
static int hold(struct device *dev, const struct gpio_chip *chip, bool *held)
{
	struct device_link *link;

	*held = goes_with_device(chip);
	if (!*held)
		return 0;
	link = device_link_add(dev, chip->parent, DL_FLAG_AUTOREMOVE_CONSUMER);
	*held = link;
	/* Else it is about to go. */
	return !link || link->status == DL_STATE_CONSUMER_PROBE ? 0 : -ENODEV;
}

static bool can_be_called(const struct gpio_chip *chip)
{
	/* In between a chip had one or another function for it. */
	return (LINUX_VERSION_CODE < KERNEL_VERSION(6, 15, 0) ||
		LINUX_VERSION_CODE >= KERNEL_VERSION(6, 17, 0)) &&
	       chip->set && chip->get;
}

static int find_way(struct device *dev, struct cpldjtag_line *line)
{
	bool held;
	int error;

	line->chip = gpiod_to_chip(line->desc);
	line->offset = offset_of(line->desc);
	line->way = CPLDJTAG_BY_FLAGS;
	if (gpiod_cansleep(line->desc))
		line->way = CPLDJTAG_SLEEPING;
	if (line->way == CPLDJTAG_SLEEPING || has_flags(line))
		return 0;
	error = hold(dev, line->chip, &held);
	if (error)
		return error;
	line->way = held && can_be_called(line->chip) ? CPLDJTAG_BY_CHIP : CPLDJTAG_RAW;
	return 0;
}

/* ---- */

static int request_line(struct device *dev, enum cpldjtag_signal signal)
{
	struct cpldjtag_line *line = &cpldjtag_lines[signal];
	int error;

	error = cpldjtag_numbers_given() ? request_number(signal, &line->desc)
					 : request_line_of(dev, signal, &line->desc);
	if (error)
		return error;
	error = find_way(dev, line);
	if (error) {
		gpiod_put(line->desc);
		return refuse(dev, signal, error, "its chip is about to go");
	}
	return 0;
}

static void release(size_t count)
{
	while (count--) {
		gpiod_put(cpldjtag_lines[count].desc);
		cpldjtag_lines[count].desc = NULL;
	}
}

int cpldjtag_lines_request(struct device *dev)
{
	enum cpldjtag_signal signal;
	int error;

	for (signal = 0; signal < CPLDJTAG_SIGNALS; signal++) {
		error = request_line(dev, signal);
		if (error) {
			release(signal);
			return error;
		}
	}
	return 0;
}

void cpldjtag_lines_release(void)
{
	release(CPLDJTAG_SIGNALS);
}

ssize_t cpldjtag_lines_show(char *page)
{
	return sysfs_emit(page, "tck=%s tms=%s tdi=%s tdo=%s\n", places[CPLDJTAG_TCK],
			  places[CPLDJTAG_TMS], places[CPLDJTAG_TDI], places[CPLDJTAG_TDO]);
}
