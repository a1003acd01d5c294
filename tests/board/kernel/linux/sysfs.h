// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include <linux/kernel.h>
#include <linux/kobject.h>

struct attribute {
  const char *name;
};

struct attribute_group {
  struct attribute **attrs;
};

static inline void sysfs_notify(struct kobject *object, const char *folder, const char *name) {}

__attribute__((format(printf, 2, 3))) static inline ssize_t sysfs_emit(char *page,
                                                                       const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(page, 4096, format, arguments);
  va_end(arguments);
  return length;
}
