// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Order of bits and bytes. A register of n bits travels as ceil(n / 8) bytes: its bit d, d = 0
// being shifted first, is bit 7 - d mod 8 of byte d div 8. A bit string holds one character '0' or
// '1' a bit, most significant bit first, and ends in a NUL.
//
// No function keeps state or a reference to its arguments. The caller frees every returned block
// with kfree. A negative length gives null.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Returns the number of bytes of a register of `bits` bits.
static inline u32 m7_register_bytes(u32 bits) {
  return (bits >> 3) + ((bits & 7) != 0);
}

// Returns bit `d` of a register at its place in byte d div 8, all other bits 0.
static inline u8 m7_register_mask(u32 d) {
  return static_cast<u8>(0x80 >> d % 8);
}

// Returns bit `d` of a register: 0 or 1.
static inline u32 m7_register_bit(const u8 *bytes, u32 d) {
  return (bytes[d / 8] & m7_register_mask(d)) != 0;
}

// Returns the first `n` characters of `src` (which need not be terminated) in reverse order, with
// a NUL after them. Null when out of memory.
u8 *Quorlan_ReverseStr(const u8 *src, s32 n);

// Returns the low 8 bits of `c` mirrored: bit i becomes bit 7 - i. 6 gives 0x60.
s32 Quorlan_ReverseChar(u32 c);

// Returns the `n` bytes of `src` mirrored end to end as one stream of bits, with a 0 byte after
// them. Null when out of memory.
u8 *Quorlan_ReverseCharStr(const u8 *src, s32 n);

// Packs `count` characters of a bit string into ceil(count / 8) bytes, with a 0 byte after them.
// The first of 8 characters is bit 7. With `reverse` exactly 1 the first `count` characters are
// taken in reverse order. A count that is no multiple of 8 puts the first count mod 8 characters
// into the low bits of byte 0. Byte b still starts at character 8 * b, so the last byte takes
// characters from past `count` (each '0' in the reversed copy, which ends there).
// Null when out of memory.
u8 *Quorlan_BinToBytes(const u8 *bits, s32 count, s32 reverse);

// Writes the four characters of the hexadecimal digit `ch` and a NUL to `out` (5 bytes). For any
// other character it writes "Error: HexToChar Invalid Hex value %c" to the kernel log and leaves
// `out` as it was.
void Quorlan_HexToChar(char ch, u8 *out);

// Returns the low `count` bits of the hexadecimal number `hex` as a bit string of `count`
// characters. An invalid digit is logged and takes the four characters of the digit to its right
// ('0' for the rightmost). Null when `count` is negative or more than four times the digits, or
// when out of memory.
u8 *Quorlan_HexStrToChars(const u8 *hex, s32 count);
}
