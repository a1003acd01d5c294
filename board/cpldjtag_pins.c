// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * The four JTAG lines: taken from gpiolib when a device is served, given back when it goes, and the
 * callbacks by which a driver moves them in between.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/gpio/consumer.h>
#include <linux/gpio/driver.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/sched.h>
#include <linux/sched/signal.h>
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

static bool skip_same_level = true;
module_param(skip_same_level, bool, 0644);
MODULE_PARM_DESC(skip_same_level, "do not drive TMS and TDI to the level that they have already");

/* How gpiolib is asked for a line: in the way that costs least. */
enum way {
	RAW,	  /* the pin has the line's level, and its chip does not sleep */
	BY_FLAGS, /* the line has flags by which gpiolib makes the pin's level of its own, or none
		   */
	SLEEPING, /* its chip may sleep */
};

#define UNKNOWN_LEVEL 2

/* One line, which a driver calls by the number of its signal. */
static struct line {
	struct gpio_desc *desc;
	u8 way;
	u8 level;   /* that was driven last; with UNKNOWN_LEVEL in it, it is none that can be */
	u8 forgets; /* UNKNOWN_LEVEL where a level that is driven already is driven again, else 0 */
} lines[CPLDJTAG_SIGNALS];

static const char *const labels[] = {
	[CPLDJTAG_TCK] = "jtag-tck",
	[CPLDJTAG_TMS] = "jtag-tms",
	[CPLDJTAG_TDI] = "jtag-tdi",
	[CPLDJTAG_TDO] = "jtag-tdo",
};

/* For people: the GPIO number of the parameters, or CHIP:OFFSET. */
static char places[CPLDJTAG_SIGNALS][64];

struct cpldjtag_pins cpldjtag_pins = {
	.tck = CPLDJTAG_TCK,
	.tms = CPLDJTAG_TMS,
	.tdi = CPLDJTAG_TDI,
	.tdo = CPLDJTAG_TDO,
};

/* What the lines have seen of the download. */
static struct cpldjtag_progress progress; /* by the download's thread */

/*
 * Why the download is to stop, and whether the lines stand still because of it. The driver cannot
 * be told to stop. But a line that stands still moves nothing, and a level that is neither 0 nor 1
 * is a failed comparison, after which the driver ends by itself. The first reads of a download are
 * not compared: they are the driver's own, of the target's IDCODE.
 */
static int stop;
static bool stands_still;

#define IDCODE_READS 32
#define NEITHER_LEVEL 2

static void release_lines(size_t count)
{
	while (count--) {
		gpiod_put(lines[count].desc);
		lines[count].desc = NULL;
	}
}

static unsigned int offset_of(const struct gpio_desc *desc)
{
	return desc_to_gpio(desc) - gpiod_to_chip(desc)->base;
}

static int request_number(enum cpldjtag_signal signal)
{
	u32 number;
	int error;

	error = cpldjtag_number_request(signal, labels[signal], &number, &lines[signal].desc);
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

static int request_line_of(struct device *dev, enum cpldjtag_signal signal)
{
	struct gpio_desc *desc;
	int error;

	error = find_line_of(dev, signal, &desc);
	if (error)
		return error;
	error = set_direction(dev, signal, desc);
	if (error) {
		gpiod_put(desc);
		return error;
	}
	gpiod_set_consumer_name(desc, labels[signal]);
	snprintf(places[signal], sizeof(places[signal]), "%s:%u", gpiod_to_chip(desc)->label,
		 offset_of(desc));
	lines[signal].desc = desc;
	return 0;
}

/* The device tree may say that a line is open-drain, which gpiolib makes up where the chip cannot.
 */
static enum way way_to(struct gpio_desc *desc)
{
	struct gpio_chip *chip = gpiod_to_chip(desc);
	const unsigned int offset = offset_of(desc);

	if (gpiod_cansleep(desc))
		return SLEEPING;
	if (gpiod_is_active_low(desc) || gpiochip_line_is_open_drain(chip, offset) ||
	    gpiochip_line_is_open_source(chip, offset))
		return BY_FLAGS;
	return RAW;
}

int cpldjtag_pins_request(struct device *dev)
{
	enum cpldjtag_signal signal;
	int error;

	for (signal = 0; signal < CPLDJTAG_SIGNALS; signal++) {
		error = cpldjtag_numbers_given() ? request_number(signal)
						 : request_line_of(dev, signal);
		if (error) {
			release_lines(signal);
			return error;
		}
		lines[signal].way = way_to(lines[signal].desc);
	}
	return 0;
}

void cpldjtag_pins_release(void)
{
	release_lines(ARRAY_SIZE(lines));
}

ssize_t cpldjtag_pins_show(char *page)
{
	return sysfs_emit(page, "tck=%s tms=%s tdi=%s tdo=%s\n", places[CPLDJTAG_TCK],
			  places[CPLDJTAG_TMS], places[CPLDJTAG_TDI], places[CPLDJTAG_TDO]);
}

static void forget_levels(void)
{
	enum cpldjtag_signal signal;

	for (signal = 0; signal < CPLDJTAG_SIGNALS; signal++) {
		lines[signal].forgets = READ_ONCE(skip_same_level) ? 0 : UNKNOWN_LEVEL;
		lines[signal].level = UNKNOWN_LEVEL;
	}
}

void cpldjtag_pins_begin(void)
{
	memset(&progress, 0, sizeof(progress));
	stands_still = false;
	forget_levels();
	WRITE_ONCE(stop, 0);
}

struct cpldjtag_progress cpldjtag_pins_progress(void)
{
	struct cpldjtag_progress copy = {
		.clocks = READ_ONCE(progress.clocks),
		.reads = READ_ONCE(progress.reads),
		.read_clock = READ_ONCE(progress.read_clock),
		.read_level = READ_ONCE(progress.read_level),
		.error = READ_ONCE(progress.error),
		.error_clock = READ_ONCE(progress.error_clock),
	};

	return copy;
}

void cpldjtag_pins_stop(int why)
{
	cmpxchg(&stop, 0, why);
}

int cpldjtag_pins_stop_requested(void)
{
	return READ_ONCE(stop);
}

int cpldjtag_pins_stopped(void)
{
	return stands_still ? stop : 0;
}

int cpldjtag_pins_error(void)
{
	return progress.error;
}

bool cpldjtag_pins_ended_reading(void)
{
	return progress.reads > IDCODE_READS && progress.read_clock == progress.clocks;
}

static int fail(int error)
{
	if (!progress.error) {
		WRITE_ONCE(progress.error_clock, progress.clocks);
		WRITE_ONCE(progress.error, error);
	}
	return error;
}

/* Whether no line moves any more. */
static __always_inline bool is_still(void)
{
	if (likely(!READ_ONCE(stop)))
		return false;
	if (progress.reads >= IDCODE_READS)
		stands_still = true;
	return stands_still;
}

static __always_inline int set_by_flags(const struct line *line, int level)
{
#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 15, 0)
	return line->way == SLEEPING ? gpiod_set_value_cansleep(line->desc, level)
				     : gpiod_set_value(line->desc, level);
#else
	/* Setting a line could not fail. */
	if (line->way == SLEEPING)
		gpiod_set_value_cansleep(line->desc, level);
	else
		gpiod_set_value(line->desc, level);
	return 0;
#endif
}

static __always_inline int set_value(const struct line *line, int level)
{
	if (unlikely(line->way != RAW))
		return set_by_flags(line, level);
#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 15, 0)
	return gpiod_set_raw_value(line->desc, level);
#else
	gpiod_set_raw_value(line->desc, level);
	return 0;
#endif
}

/* TCK is never skipped: a clock is each of its edges. */
static __always_inline int drive_clock(int level)
{
	int error;

	if (is_still())
		return 0;
	error = set_value(&lines[CPLDJTAG_TCK], level);
	if (unlikely(error))
		fail(error);
	if (level)
		WRITE_ONCE(progress.clocks, progress.clocks + 1);
	return error;
}

static __always_inline int drive_data(u32 signal, int level)
{
	struct line *line;
	int error;

	if (unlikely(signal >= CPLDJTAG_SIGNALS))
		return fail(-EINVAL);
	line = &lines[signal];
	if (is_still() || line->level == level)
		return 0;
	line->level = level | line->forgets;
	error = set_value(line, level);
	if (unlikely(error)) {
		line->level = UNKNOWN_LEVEL;
		return fail(error);
	}
	return 0;
}

/* A download is one long loop of clocks: others are let run between them. */
static __always_inline void look_up(void)
{
	if (need_resched())
		cond_resched();
	if (unlikely(fatal_signal_pending(current)))
		cpldjtag_pins_stop(-EINTR);
}

static int drive_high(u32 signal)
{
	return signal == CPLDJTAG_TCK ? drive_clock(1) : drive_data(signal, 1);
}

static int drive_low(u32 signal)
{
	if (signal != CPLDJTAG_TCK)
		return drive_data(signal, 0);
	look_up();
	return drive_clock(0);
}

static __always_inline int get_value(const struct line *line)
{
	if (likely(line->way == RAW))
		return gpiod_get_raw_value(line->desc);
	return line->way == SLEEPING ? gpiod_get_value_cansleep(line->desc)
				     : gpiod_get_value(line->desc);
}

static int read_line(u32 signal)
{
	int level = likely(signal < CPLDJTAG_SIGNALS) ? get_value(&lines[signal]) : -EINVAL;

	if (level < 0) {
		fail(level);
		return 0;
	}
	return level != 0;
}

static int read_level(u32 signal)
{
	int level;

	if (is_still())
		return NEITHER_LEVEL;
	level = read_line(signal);
	WRITE_ONCE(progress.read_clock, progress.clocks);
	WRITE_ONCE(progress.read_level, level);
	WRITE_ONCE(progress.reads, progress.reads + 1);
	return level;
}

const struct cpldjtag_pin_ops cpldjtag_pin_ops = {
	.drive_high = drive_high,
	.drive_low = drive_low,
	.read = read_level,
};
