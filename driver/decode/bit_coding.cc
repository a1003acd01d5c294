// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/bit_coding.h"

#include "decode/block.h"
#include "player/reader.h"

extern "C" {

struct bit_reader {
  u32 byte;
  u32 used;  // bits of it
};

static u32 read_bit(struct bit_reader *bits) {
  if (bits->used >= 8) {
    bits->byte = fgetc();
    bits->used = 0;
  }
  return bits->byte >> (7 - bits->used++) & 1;
}

static u8 read_literal(struct bit_reader *bits) {
  u32 literal = 0;
  for (u32 i = 0; i < 8; i++)
    literal = literal << 1 | read_bit(bits);
  return static_cast<u8>(literal);
}

u8 *Quorlan_HuffmanDecode(s64 count) {
  u8 *block = m7_alloc_decoded(count);
  if (!block)
    return nullptr;

  const u8 symbol = static_cast<u8>(fgetc());
  struct bit_reader bits = {0, 8};
  for (s64 i = 0; i < count; i++)
    block[i] = read_bit(&bits) ? read_literal(&bits) : symbol;
  return block;
}
}
