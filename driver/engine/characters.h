// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The characters of a vector (engine/vector.h), one a TCK period, and those of a register's bits.
#pragma once

#include "kernel/kernel.h"

// The bits of a character. Bits 2 to 0 repeat bits 6 to 4.
#define VECTOR_TCK_FIRST 7  // TCK in the first half of the period: 0
#define VECTOR_TDI 6
#define VECTOR_TMS 5
#define VECTOR_EXPECTED 4    // expected TDO
#define VECTOR_TCK_SECOND 3  // TCK in the second half: 1

// Characters of TDI 0 that expect 0, and what another level adds.
#define CHARACTER_TMS_0 0x08
#define CHARACTER_TMS_1 0x2A
#define CHARACTER_ADD_TDI 0x44
#define CHARACTER_ADD_TMS 0x22
#define CHARACTER_ADD_EXPECTED 0x11

extern "C" {

// What a scan shifts and what it expects: registers in the order of util/bit_string.h, owned by the
// caller. Null: zeros.
struct registers {
  const u8 *tdi;
  const u8 *tdo;
};

// Returns the character of bit `d`, with TMS 0.
u8 m7_character(const struct registers *registers, u32 d);

// Writes the characters of the bits from `d` up to `to`, all with TMS 0, to `place`.
void m7_put_characters(u8 *place, const struct registers *registers, u32 d, u32 to);
}
