// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * replay.ko: a driver for cpldjtag that ignores its image and makes the calls which null_chip.ko
 * has recorded. Parameters, for the next download:
 *
 *   way           framework   through cpldjtag, as a driver does
 *                 gpiolib     through gpiolib: gpiod_set_raw_value and gpiod_get_raw_value
 *                 chip        of the chip itself, by its pointers
 *                 nothing     as through cpldjtag, but of functions that do nothing
 *   changes_only  leaves out what drives TMS or TDI to the level that the line has
 *
 * Its parameter "ns" is how long the calls of the last download took.
 */
#include <linux/gpio.h>
#include <linux/gpio/consumer.h>
#include <linux/kernel.h>
#include <linux/ktime.h>
#include <linux/module.h>
#include <linux/string.h>
#include <linux/vmalloc.h>

#include "board/cpldjtag.h"
#include "null_chip.h"

static char *way = "framework";
module_param(way, charp, 0644);

static bool changes_only;
module_param(changes_only, bool, 0644);

static unsigned long ns;
module_param(ns, ulong, 0444);

/* ---- ways */

typedef void play_function(const struct download_context *context, const u8 *call, const u8 *end);

/* The compiler does not see which functions these are. */
static noinline void play_by_ops(const struct cpldjtag_pins *pins,
                                 const struct cpldjtag_pin_ops *its_ops, const u8 *call,
                                 const u8 *end) {
  const struct cpldjtag_pin_ops ops = *its_ops;
  const u32 numbers[] = {pins->tck, pins->tms, pins->tdi, pins->tdo};

  for (; call < end; call++) {
    const u32 number = numbers[CALL_LINE(*call)];

    if (CALL_LINE(*call) == NULL_TDO)
      ops.read(number);
    else if (CALL_LEVEL(*call))
      ops.drive_high(number);
    else
      ops.drive_low(number);
  }
}

static void play_by_framework(const struct download_context *context, const u8 *call,
                              const u8 *end) {
  play_by_ops(context->pins, context->pin_ops, call, end);
}

static int do_nothing(u32 number) {
  return 0;
}

static void play_by_nothing(const struct download_context *context, const u8 *call, const u8 *end) {
  static const struct cpldjtag_pin_ops nothing = {
      .drive_high = do_nothing,
      .drive_low = do_nothing,
      .read = do_nothing,
  };
  const struct cpldjtag_pin_ops *ops = &nothing;

  OPTIMIZER_HIDE_VAR(ops);
  play_by_ops(context->pins, ops, call, end);
}

static void play_by_gpiolib(const struct download_context *context, const u8 *call, const u8 *end) {
  struct gpio_desc *descs[NULL_LINES];
  unsigned int line;

  for (line = 0; line < NULL_LINES; line++)
    descs[line] = gpio_to_desc(null_chip.base + line);
  for (; call < end; call++) {
    if (CALL_LINE(*call) == NULL_TDO)
      gpiod_get_raw_value(descs[NULL_TDO]);
    else
      gpiod_set_raw_value(descs[CALL_LINE(*call)], CALL_LEVEL(*call));
  }
}

static void play_by_chip(const struct download_context *context, const u8 *call, const u8 *end) {
  struct gpio_chip *const chip = &null_chip;

  for (; call < end; call++) {
    if (CALL_LINE(*call) == NULL_TDO)
      chip->get(chip, NULL_TDO);
    else
      chip->set(chip, CALL_LINE(*call), CALL_LEVEL(*call));
  }
}

static const struct {
  const char *name;
  play_function *play;
} ways[] = {
    {"framework", play_by_framework},
    {"gpiolib", play_by_gpiolib},
    {"chip", play_by_chip},
    {"nothing", play_by_nothing},
};

static play_function *find_way(void) {
  size_t i;

  for (i = 0; i < ARRAY_SIZE(ways); i++) {
    if (sysfs_streq(way, ways[i].name))
      return ways[i].play;
  }
  return NULL;
}

/* ---- the calls */

static size_t copy_calls(u8 *copy, bool all) {
  int levels[NULL_LINES] = {-1, -1, -1, -1};
  size_t i, count = 0;

  for (i = 0; i < null_recording.count; i++) {
    const u8 call = null_recording.calls[i];
    const unsigned int line = CALL_LINE(call);
    const bool repeats = (line == NULL_TMS || line == NULL_TDI) && levels[line] == CALL_LEVEL(call);

    levels[line] = CALL_LEVEL(call);
    if (all || !repeats)
      copy[count++] = call;
  }
  return count;
}

static s32 download(struct download_context *context, const u8 *image, u32 length) {
  play_function *play = find_way();
  u8 *copy;
  size_t count;
  u64 began;

  if (!play || !null_recording.count)
    return -2;
  copy = vmalloc(null_recording.count);
  if (!copy)
    return -2;
  count = copy_calls(copy, !changes_only);
  began = ktime_get_ns();
  play(context, copy, copy + count);
  ns = ktime_get_ns() - began;
  vfree(copy);
  return 1;
}

static const struct cpldjtag_ops ops = {.download = download};
static struct cpldjtag_driver driver = {.name = "replay", .ops = &ops};

static int __init replay_init(void) {
  return cpldjtag_driver_register(&driver);
}

static void __exit replay_exit(void) {
  cpldjtag_driver_unregister(driver.name);
}

module_init(replay_init);
module_exit(replay_exit);
MODULE_LICENSE("Dual BSD/GPL");
MODULE_DESCRIPTION("Makes recorded calls");
