// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include <linux/gpio/consumer.h>

struct gpio_chip {
  const char *label;
  int base;
  struct device *parent;
  const struct module *owner;
  void (*set)(struct gpio_chip *chip, unsigned offset, int level);
  int (*get)(struct gpio_chip *chip, unsigned offset);
};

struct gpio_chip *gpiod_to_chip(const struct gpio_desc *desc);
int desc_to_gpio(const struct gpio_desc *desc);

#define gpiochip_line_is_open_drain(chip, offset) ((void)(chip), (void)(offset), 0)
#define gpiochip_line_is_open_source gpiochip_line_is_open_drain
