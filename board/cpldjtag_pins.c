// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/* The callbacks by which a driver moves the four JTAG lines. */

#include <linux/gpio/consumer.h>
#include <linux/gpio/driver.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/sched.h>
#include <linux/sched/signal.h>
#include <linux/string.h>
#include <linux/version.h>

#include "cpldjtag_internal.h"

static bool skip_same_level = true;
module_param(skip_same_level, bool, 0644);
MODULE_PARM_DESC(skip_same_level, "do not drive TMS and TDI to the level that they have already");

/*
 * The level that a line was driven to last; with UNKNOWN_LEVEL in it, it is none that can be asked
 * for. @forgotten is UNKNOWN_LEVEL where a level that is driven already is driven again, and else
 * 0.
 */
#define UNKNOWN_LEVEL 2
static u8 levels[CPLDJTAG_SIGNALS];
static u8 forgotten;

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

void cpldjtag_pins_begin(void)
{
	memset(&progress, 0, sizeof(progress));
	stands_still = false;
	forgotten = READ_ONCE(skip_same_level) ? 0 : UNKNOWN_LEVEL;
	memset(levels, UNKNOWN_LEVEL, sizeof(levels));
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

/* At first, setting a line could not fail. */
#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 15, 0)
#define RESULT_OF(set) (set)
#else
#define RESULT_OF(set) ((set), 0)
#endif

#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 17, 0)
#define RESULT_OF_CHIP(set) (set)
#else
#define RESULT_OF_CHIP(set) ((set), 0)
#endif

static int set_by_flags(const struct cpldjtag_line *line, int level)
{
	return line->way == CPLDJTAG_SLEEPING
		       ? RESULT_OF(gpiod_set_value_cansleep(line->desc, level))
		       : RESULT_OF(gpiod_set_value(line->desc, level));
}

static __always_inline int set_value(const struct cpldjtag_line *line, int level)
{
	struct gpio_chip *chip = line->chip;

	if (likely(line->way == CPLDJTAG_BY_CHIP))
		return RESULT_OF_CHIP(chip->set(chip, line->offset, level));
	if (likely(line->way == CPLDJTAG_RAW))
		return RESULT_OF(gpiod_set_raw_value(line->desc, level));
	return set_by_flags(line, level);
}

/* TCK is never skipped: a clock is each of its edges. */
static __always_inline int drive_clock(int level)
{
	int error;

	if (is_still())
		return 0;
	error = set_value(&cpldjtag_lines[CPLDJTAG_TCK], level);
	if (unlikely(error))
		fail(error);
	if (level)
		WRITE_ONCE(progress.clocks, progress.clocks + 1);
	return error;
}

static __always_inline int drive_data(u32 signal, int level)
{
	int error;

	if (unlikely(signal >= CPLDJTAG_SIGNALS))
		return fail(-EINVAL);
	if (is_still() || levels[signal] == level)
		return 0;
	levels[signal] = level | forgotten;
	error = set_value(&cpldjtag_lines[signal], level);
	if (unlikely(error)) {
		levels[signal] = UNKNOWN_LEVEL;
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

static int get_by_flags(const struct cpldjtag_line *line)
{
	return line->way == CPLDJTAG_SLEEPING ? gpiod_get_value_cansleep(line->desc)
					      : gpiod_get_value(line->desc);
}

static __always_inline int get_value(const struct cpldjtag_line *line)
{
	struct gpio_chip *chip = line->chip;

	if (likely(line->way == CPLDJTAG_BY_CHIP))
		return chip->get(chip, line->offset);
	if (likely(line->way == CPLDJTAG_RAW))
		return gpiod_get_raw_value(line->desc);
	return get_by_flags(line);
}

static int read_line(u32 signal)
{
	int level =
		likely(signal < CPLDJTAG_SIGNALS) ? get_value(&cpldjtag_lines[signal]) : -EINVAL;

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
