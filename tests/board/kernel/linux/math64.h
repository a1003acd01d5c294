// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include <linux/types.h>

static inline u64 div_u64(u64 dividend, u32 divisor) {
  return dividend / divisor;
}
