// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A fast hash of bytes, for tables in memory.
#pragma once

#include <cstdint>
#include <cstring>

#include "tvb/bytes.h"

namespace tvb {

// Equal bytes have equal hashes; different bytes almost never do. The value depends on the machine.
// The loops of a compiled file depend on the values where different records have equal ones.
inline uint64_t Hash(Bytes bytes) {
  constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  const uint8_t *at = bytes.data();
  size_t left = bytes.size();
  uint64_t hash = kOdd ^ left;
  for (; left >= 8; left -= 8, at += 8) {
    uint64_t word;
    memcpy(&word, at, 8);
    hash = (hash ^ word) * kOdd;
    hash ^= hash >> 32;
  }
  uint64_t rest = 0;
  while (left > 0) {
    rest = rest << 8 | at[--left];
  }
  hash = (hash ^ rest) * kOdd;
  return hash ^ hash >> 29;
}

}  // namespace tvb
