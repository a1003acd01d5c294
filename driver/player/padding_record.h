// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Header and trailer records (TDR, TIR, HDR, HIR): the register length in bits and, unless that is
// 0, the TDI tag, the bytes as they stand, and a closing byte that is not tested.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Reads the body of the record at g_pos, stores length and bytes in the register of `opcode` (9
// to 12), whose earlier bytes are freed, and rebuilds its vector. With another tag than TDI the
// register holds no bytes and its vector is zeros. Returns 0; RESULT_NO_MEMORY (for want
// of a vector the register is gone); RESULT_MALFORMED for another opcode, or for a record that the
// image cuts off, which is not stored.
s32 Quorlan_ProcessHeadAndTrailerCommand(signed char opcode);

// Frees and clears the bytes of HDR, TIR and TDR, at the end of a command file. Those of HIR stay
// until another HIR record replaces them. This is meant.
void m7_release_padding_data(void);

// Frees and clears the bytes of all four, at unload.
void m7_release_all_padding_data(void);
}
