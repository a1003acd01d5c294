/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/* What null_chip.ko has for replay.ko. */
#ifndef TESTS_KERNEL_MODULES_NULL_CHIP_H
#define TESTS_KERNEL_MODULES_NULL_CHIP_H

#include <linux/gpio/driver.h>

/* Its lines, and those of a call. */
enum null_line { NULL_TCK, NULL_TMS, NULL_TDI, NULL_TDO, NULL_LINES };

/*
 * A call of a recording, a byte: the line in bits 1 and 0, and the level that it is driven to in
 * bit
 * 2. One of TDO reads it.
 */
#define CALL_LINE(call) ((call)&3)
#define CALL_LEVEL(call) ((call) >> 2 & 1)

struct null_recording {
  u8 *calls;
  size_t count;
};

extern struct gpio_chip null_chip;

/* What was asked of the chip while it last recorded. It is the chip's. */
extern struct null_recording null_recording;

#endif
