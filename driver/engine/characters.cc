// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/characters.h"

#include "util/bit_string.h"

extern "C" {

u8 m7_character(const struct registers *registers, u32 d) {
  u32 character = CHARACTER_TMS_0;
  if (registers->tdi)
    character += CHARACTER_ADD_TDI * m7_register_bit(registers->tdi, d);
  if (registers->tdo)
    character += CHARACTER_ADD_EXPECTED * m7_register_bit(registers->tdo, d);
  return static_cast<u8>(character);
}

// Returns the bits of a byte as eight bytes of 0 or 1, the first of them that of the most
// significant bit.
static u64 spread(u8 byte) {
  const u64 each = 0x0101010101010101;
  const u64 picked = byte * each & 0x0102040810204080;
  return (picked + 0x7F * each) >> 7 & each;
}

static void put_eight(u8 *place, const struct registers *registers, u32 d) {
  u64 characters = CHARACTER_TMS_0 * 0x0101010101010101;
  if (registers->tdi)
    characters += CHARACTER_ADD_TDI * spread(registers->tdi[d / 8]);
  if (registers->tdo)
    characters += CHARACTER_ADD_EXPECTED * spread(registers->tdo[d / 8]);
  __builtin_memcpy(place, &characters, sizeof(characters));
}

void m7_put_characters(u8 *place, const struct registers *registers, u32 d, u32 to) {
  for (; d < to && d % 8 != 0; d++)
    *place++ = m7_character(registers, d);
  for (; to - d >= 8; d += 8, place += 8)
    put_eight(place, registers, d);
  for (; d < to; d++)
    *place++ = m7_character(registers, d);
}
}
