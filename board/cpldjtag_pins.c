// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * The four JTAG lines: taken from gpiolib when the module loads, given back when it goes, and the
 * callbacks by which a driver moves them in between.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/gpio.h>
#include <linux/gpio/consumer.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/sched.h>
#include <linux/sysfs.h>

#include "cpldjtag_internal.h"

static int tck = -1;
module_param(tck, int, 0444);
MODULE_PARM_DESC(tck, "GPIO number of TCK");
static int tms = -1;
module_param(tms, int, 0444);
MODULE_PARM_DESC(tms, "GPIO number of TMS");
static int tdi = -1;
module_param(tdi, int, 0444);
MODULE_PARM_DESC(tdi, "GPIO number of TDI (of the chain; an output of the board)");
static int tdo = -1;
module_param(tdo, int, 0444);
MODULE_PARM_DESC(tdo, "GPIO number of TDO (of the chain; an input of the board)");

/* One line. TMS and TDI rest high, as their pull-ups would have them. */
static struct line {
	const char *name;
	const int *number;
	unsigned long flags;
	struct gpio_desc *desc;
} lines[] = {
	{"jtag-tck", &tck, GPIOF_OUT_INIT_LOW, NULL},
	{"jtag-tms", &tms, GPIOF_OUT_INIT_HIGH, NULL},
	{"jtag-tdi", &tdi, GPIOF_OUT_INIT_HIGH, NULL},
	{"jtag-tdo", &tdo, GPIOF_IN, NULL},
};

struct cpldjtag_pins cpldjtag_pins;
static int first_error;

static void release_lines(size_t count)
{
	while (count--) {
		gpio_free(*lines[count].number);
		lines[count].desc = NULL;
	}
}

static int request_line(struct line *line)
{
	int number = *line->number;
	int error;

	if (number < 0) {
		pr_err("%s= is missing\n", line->name + strlen("jtag-"));
		return -EINVAL;
	}
	/* gpiolib would warn about an invalid number. */
	error = gpio_is_valid(number) ? gpio_request_one(number, line->flags, line->name) : -EINVAL;
	/* Nobody would try again later. */
	if (error == -EPROBE_DEFER)
		error = -ENODEV;
	if (error) {
		pr_err("GPIO %d is not available for %s: error %d\n", number, line->name, error);
		return error;
	}
	line->desc = gpio_to_desc(number);
	return 0;
}

int cpldjtag_pins_request(void)
{
	size_t i;
	int error;

	for (i = 0; i < ARRAY_SIZE(lines); i++) {
		error = request_line(&lines[i]);
		if (error) {
			release_lines(i);
			return error;
		}
	}
	cpldjtag_pins.tck = tck;
	cpldjtag_pins.tms = tms;
	cpldjtag_pins.tdi = tdi;
	cpldjtag_pins.tdo = tdo;
	return 0;
}

void cpldjtag_pins_release(void)
{
	release_lines(ARRAY_SIZE(lines));
}

ssize_t cpldjtag_pins_show(char *page)
{
	return sysfs_emit(page, "tck=%d tms=%d tdi=%d tdo=%d\n", tck, tms, tdi, tdo);
}

void cpldjtag_pins_clear_error(void)
{
	first_error = 0;
}

int cpldjtag_pins_error(void)
{
	return first_error;
}

static int fail(int error)
{
	if (!first_error)
		first_error = error;
	return error;
}

static struct gpio_desc *find_line(u32 gpio)
{
	size_t i;

	for (i = 0; i < ARRAY_SIZE(lines); i++) {
		if (*lines[i].number == gpio)
			return lines[i].desc;
	}
	return NULL;
}

/* The raw level: a JTAG line is never active-low. Sleeping chips are fine, a download may sleep. */
static int drive(u32 gpio, int level)
{
	struct gpio_desc *desc = find_line(gpio);

	if (!desc)
		return fail(-EINVAL);
	gpiod_set_raw_value_cansleep(desc, level);
	return 0;
}

static int drive_high(u32 gpio)
{
	return drive(gpio, 1);
}

static int drive_low(u32 gpio)
{
	/* A download is one long loop of these calls: let others run between them. */
	cond_resched();
	return drive(gpio, 0);
}

static int read_level(u32 gpio)
{
	struct gpio_desc *desc = find_line(gpio);
	int level;

	if (!desc) {
		fail(-EINVAL);
		return 0;
	}
	level = gpiod_get_raw_value_cansleep(desc);
	if (level < 0) {
		fail(level);
		return 0;
	}
	return level != 0;
}

const struct cpldjtag_pin_ops cpldjtag_pin_ops = {
	.drive_high = drive_high,
	.drive_low = drive_low,
	.read = read_level,
};
