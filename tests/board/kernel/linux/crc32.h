// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel's CRC-32, bit by bit.
#pragma once

#include <linux/types.h>

// Goes on with `crc` over `length` bytes; the caller inverts it before the first and after the
// last.
static inline u32 crc32_le(u32 crc, const u8 *bytes, size_t length) {
  for (size_t i = 0; i < length; i++) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; bit++)
      crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0);
  }
  return crc;
}
