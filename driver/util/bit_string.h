// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Order of bits and bytes. A bit string holds one character '0' or '1' a bit, most significant
// bit first, and ends in a NUL. No function keeps state, or a reference to what it is given; every
// returned block is the caller's, freed with kfree. A negative length gives null.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Returns the first `n` characters of `src` (which need not be terminated) in reverse order, with
// a NUL after them. Null when memory cannot be had.
u8 *Quorlan_ReverseStr(const u8 *src, s32 n);

// Returns the low 8 bits of `c` mirrored: bit i becomes bit 7 - i. 6 gives 0x60.
s32 Quorlan_ReverseChar(u32 c);

// Returns the `n` bytes of `src` mirrored end to end as one stream of bits, with a 0 byte after
// them. Null when memory cannot be had.
u8 *Quorlan_ReverseCharStr(const u8 *src, s32 n);

// Packs `count` characters of a bit string into ceil(count / 8) bytes, with a 0 byte after them.
// The first of 8 characters is bit 7. With `reverse` exactly 1 the first `count` characters are
// taken in reverse order. A count that is no multiple of 8 puts the first count mod 8 characters
// into the low bits of byte 0; byte b starts at character 8 * b all the same, so the last byte
// takes its 8 characters, from past `count` (as '0' in the reversed copy, which ends there).
// Null when memory cannot be had.
u8 *Quorlan_BinToBytes(const u8 *bits, s32 count, s32 reverse);
}
