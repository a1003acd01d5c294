// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * null_chip.ko: a GPIO chip of four lines that does nothing. TDO reads low. What costs anything on
 * its lines is what is above it. With "device=0" it is a chip of no device. With "probing=1" its
 * device's driver probes until that is turned off, and then fails; so the chip goes, and the
 * module.
 *
 * While its parameter "record" is on it remembers what it is asked; turning that on forgets what
 * was remembered before.
 */
#include <linux/delay.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/vmalloc.h>

#include "null_chip.h"

static bool has_device = true;
module_param_named(device, has_device, bool, 0444);

static bool probing;
module_param(probing, bool, 0600);

/* More would not be remembered, but counted. */
#define MAX_CALLS (8 << 20)

struct null_recording null_recording;
EXPORT_SYMBOL_GPL(null_recording);

static void remember(unsigned int line, int level) {
  if (null_recording.count < MAX_CALLS)
    null_recording.calls[null_recording.count] = line | level << 2;
  null_recording.count++;
}

static int get_direction(struct gpio_chip *chip, unsigned int line) {
  return line == NULL_TDO ? GPIO_LINE_DIRECTION_IN : GPIO_LINE_DIRECTION_OUT;
}

static int direction_input(struct gpio_chip *chip, unsigned int line) {
  return 0;
}

static int direction_output(struct gpio_chip *chip, unsigned int line, int level) {
  return 0;
}

static int get(struct gpio_chip *chip, unsigned int line) {
  return 0;
}

static void set(struct gpio_chip *chip, unsigned int line, int level) {}

static int get_and_remember(struct gpio_chip *chip, unsigned int line) {
  remember(line, 0);
  return 0;
}

static void set_and_remember(struct gpio_chip *chip, unsigned int line, int level) {
  remember(line, level);
}

struct gpio_chip null_chip = {
    .label = "null_chip",
    .owner = THIS_MODULE,
    .base = -1,
    .ngpio = NULL_LINES,
    .get_direction = get_direction,
    .direction_input = direction_input,
    .direction_output = direction_output,
    .get = get,
    .set = set,
};
EXPORT_SYMBOL_GPL(null_chip);

/* Not during a download. */
static int set_record(const char *text, const struct kernel_param *parameter) {
  bool on;
  int error;

  error = kstrtobool(text, &on);
  if (error)
    return error;
  if (on)
    null_recording.count = 0;
  else if (null_recording.count > MAX_CALLS)
    return -ENOSPC;
  null_chip.get = on ? get_and_remember : get;
  null_chip.set = on ? set_and_remember : set;
  return 0;
}

static const struct kernel_param_ops record_ops = {.set = set_record};
module_param_cb(record, &record_ops, NULL, 0200);

static int probe(struct platform_device *device) {
  int error;

  null_chip.parent = &device->dev;
  error = devm_gpiochip_add_data(&device->dev, &null_chip, NULL);
  if (error || !probing)
    return error;
  while (READ_ONCE(probing))
    msleep(10);
  return -ENODEV;
}

static struct platform_driver driver = {
    .driver = {.name = "null_chip"},
};

static struct platform_device *device;

static int __init null_chip_init(void) {
  int error;

  null_recording.calls = vmalloc(MAX_CALLS);
  if (!null_recording.calls)
    return -ENOMEM;
  if (has_device) {
    device = platform_create_bundle(&driver, probe, NULL, 0, NULL, 0);
    error = PTR_ERR_OR_ZERO(device);
  } else {
    error = gpiochip_add_data(&null_chip, NULL);
  }
  if (error)
    vfree(null_recording.calls);
  return error;
}

static void __exit null_chip_exit(void) {
  if (has_device) {
    platform_device_unregister(device);
    platform_driver_unregister(&driver);
  } else {
    gpiochip_remove(&null_chip);
  }
  vfree(null_recording.calls);
}

module_init(null_chip_init);
module_exit(null_chip_exit);
MODULE_LICENSE("Dual BSD/GPL");
MODULE_DESCRIPTION("A GPIO chip that does nothing");
