// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Hexadecimal digits to bit strings (most significant bit first).
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Writes the four characters of the hexadecimal digit `ch` and a NUL to `out` (5 bytes). For any
// other character it writes "Error: HexToChar Invalid Hex value %c" to the kernel log and leaves
// `out` as it was.
void Quorlan_HexToChar(char ch, u8 *out);

// Returns the low `count` bits of the hexadecimal number `hex` as a bit string of `count`
// characters, the caller's to free with kfree. An invalid digit is logged, and its four
// characters are those of the digit to its right ('0' for the rightmost). Null when `count` is
// negative or more than four times the digits, or memory cannot be had.
u8 *Quorlan_HexStrToChars(const u8 *hex, s32 count);
}
