// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include <stdio.h>
#include <string.h>

static inline void strscpy(char *to, const char *from, size_t size) {
  snprintf(to, size, "%s", from);
}

// Nobody writes names here.
static inline char *strim(char *text) {
  return text;
}
