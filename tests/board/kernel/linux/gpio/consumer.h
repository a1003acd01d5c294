// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// framework.c has these functions, over a simulated chain.
#pragma once

#include <errno.h>
#include <linux/types.h>

#define EPROBE_DEFER 517

struct device;
struct gpio_desc;
enum gpiod_flags { GPIOD_ASIS };

struct gpio_desc *gpiod_get(struct device *dev, const char *name, enum gpiod_flags flags);
void gpiod_put(struct gpio_desc *desc);
int gpiod_direction_input(struct gpio_desc *desc);
int gpiod_direction_output(struct gpio_desc *desc, int level);
void gpiod_set_value_cansleep(struct gpio_desc *desc, int level);
int gpiod_get_value_cansleep(const struct gpio_desc *desc);

#define gpiod_cansleep(desc) ((void)(desc), 1)
#define gpiod_set_value gpiod_set_value_cansleep
#define gpiod_get_value gpiod_get_value_cansleep
#define gpiod_set_raw_value gpiod_set_value_cansleep
#define gpiod_get_raw_value gpiod_get_value_cansleep
#define PTR_ERR_OR_ZERO(pointer) ((pointer) ? 0 : -ENOENT)
#define gpiod_is_active_low(desc) ((void)(desc), 0)
#define gpiod_set_consumer_name(desc, name) ((void)(desc), (void)(name))
