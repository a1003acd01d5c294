// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/nibble.h"

#include "decode/block.h"
#include "player/reader.h"
#include "util/memory.h"

extern "C" {

// Returns the pattern of m nibbles at g_pos in a zeroed block one byte longer, or null.
static u8 *read_pattern(s64 m) {
  const s64 size = (m + 1) / 2;
  u8 *pattern = m7_alloc_zeroed_bytes(static_cast<u64>(size + 1));
  for (s64 i = 0; pattern && i < size; i++)
    pattern[i] = static_cast<u8>(fgetc());
  return pattern;
}

// Repeats a pattern of m nibbles, m odd, after itself: bytes 0 to m - 1 then hold it twice.
static void double_pattern(u8 *pattern, s64 m) {
  const s64 size = (m + 1) / 2;
  pattern[size - 1] = static_cast<u8>((pattern[size - 1] & 0xF0) | pattern[0] >> 4);
  for (s64 k = size; k < m; k++)
    pattern[k] = static_cast<u8>(pattern[k - size] << 4 | pattern[k - size + 1] >> 4);
}

static void repeat(u8 *block, const u8 *pattern, s64 size, s64 times) {
  for (s64 r = 0; r < times; r++)
    memcpy(block + r * size, pattern, static_cast<size_t>(size));
}

u8 *Quorlan_NibbleDecode(s64 count) {
  u8 *block = m7_alloc_decoded(count);
  if (!block)
    return nullptr;

  const s64 m = Quorlan_NumberDecode();
  u8 *pattern = read_pattern(m);
  if (!pattern) {
    printk("nibble decode: calloc fail");
    kfree(block);
    return nullptr;
  }

  const s64 repetitions = m > 0 ? 2 * count / m : 0;
  if (m % 2 == 0) {
    repeat(block, pattern, m / 2, repetitions);
  } else if (m != -1) {
    u8 *doubled = m7_realloc_bytes(pattern, static_cast<u64>(m + 1));
    if (!doubled) {
      // The pattern stays allocated. This is meant.
      printk("nibble decode: realloc fail");
      kfree(block);
      return nullptr;
    }
    pattern = doubled;
    double_pattern(pattern, m);
    repeat(block, pattern, m, static_cast<s32>(repetitions / 2));
  }
  kfree(pattern);
  return block;
}
}
