// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One thread runs what is compiled over these headers, and nothing interrupts it.
#pragma once

#include <linux/types.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

#define ARRAY_SIZE(array) (sizeof(array) / sizeof((array)[0]))
#define READ_ONCE(variable) (variable)
#define WRITE_ONCE(variable, value) ((variable) = (value))
#define likely(condition) (condition)
#define unlikely(condition) (condition)

// Stores `value` where `expected` is.
#define cmpxchg(place, expected, value) \
  do {                                  \
    if (*(place) == (expected))         \
      *(place) = (value);               \
  } while (0)

// Nobody reads the kernel log.
__attribute__((format(printf, 1, 2))) static inline void printk(const char *format, ...) {}
#define pr_err(format, ...) printk(pr_fmt(format), __VA_ARGS__)
#define pr_warn pr_err
#define pr_info pr_err

#define scnprintf snprintf  // the results are not used

static inline int kstrtou64(const char *text, unsigned base, u64 *number) {
  *number = strtoull(text, NULL, (int)base);
  return 0;
}
