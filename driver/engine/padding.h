// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Header and trailer registers: the bits that pad every scan of a chain before the target's own
// (header, for the devices between target and TDO) and after them (trailer).
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Length of each register in bits; 0: no such register. Kept from one download to the next until
// a record of the same register replaces it. 0 at load.
extern u32 g_tdr_len, g_tir_len, g_hdr_len, g_hir_len;

// The bytes of each register as its record had them (ceil(length / 8), then a 0), or null. The
// interpreter stores, replaces and frees them.
extern u8 *g_tdr_data, *g_tir_data, *g_hdr_data, *g_hir_data;

// Each register as vector characters, ready to append, or null. Freed at the normal end of a
// download.
extern u8 *g_tdr_vector, *g_tir_vector, *g_hdr_vector, *g_hir_vector;

// Returns the index of a register (0 TDR, 1 TIR, 2 HDR, 3 HIR) by its record's opcode (9 to 12),
// -1 for any other opcode.
s32 m7_padding_index(signed char opcode);

// Rebuilds the vector of the register of `opcode` from the first `bits` bits of `data` (in the
// order of util/bit_string.h); null stands for zeros. The last character of a trailer has TMS 1: it
// ends the shift. With 0 bits the register has no vector. When out of memory, or when `bits` is
// negative, it has none either and the download is stopped. Any other opcode is reported to the
// kernel log and changes nothing.
void Quorlan_GenHeadAndTrailerVec(signed char opcode, s32 bits, const u8 *data);
}
