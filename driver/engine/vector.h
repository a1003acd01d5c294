// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The vector: a JTAG operation written out before it is played, as a NUL-terminated string with
// one character a TCK period. No character is 0, for TCK ends every period high.
#pragma once

#include "kernel/kernel.h"

// The bits of a character. Bits 2 to 0 repeat bits 6 to 4.
#define VECTOR_TCK_FIRST 7  // TCK in the first half of the period: 0
#define VECTOR_TDI 6
#define VECTOR_TMS 5
#define VECTOR_EXPECTED 4    // expected TDO
#define VECTOR_TCK_SECOND 3  // TCK in the second half: 1

// The bits of g_vec_val.
#define LEVEL_TDI 1
#define LEVEL_EXPECTED 2
#define LEVEL_TMS 3

extern "C" {

// The vector that is built or played, or null. Allocated for a download and freed at a normal end.
// A buffer that somebody else put there must hold g_vector_size bytes and come from __kmalloc.
extern u8 *g_vector;

// The largest length, in characters, that was ever asked for. 3200 at load, never lowered.
extern u32 g_vector_size;

// The levels that the next character will carry; bits without a name are kept. 0 at load.
extern u32 g_vec_val;

// Scratch: byte 0 is the last character made, byte 1 is 0.
extern u8 g_buf[2];

// Empties the vector for one of `length` characters: raises g_vector_size to it, and allocates
// g_vector_size + 1 bytes where there is no buffer. An existing buffer is kept; it grows when an
// append does not fit. A failure writes "Error: malloc/realloc failed, size %d\n" to the kernel
// log and stops the download.
void Quorlan_MemSet(u32 length);

// Empties the vector for a shift: Quorlan_MemSet with `asked` characters. Returns false, the
// download stopped, when these are 2^32 or more, or when no buffer can hold the `needed` characters
// that the shift will really have.
bool m7_begin_vector(u64 asked, u64 needed);

// To be called when g_vector was freed.
void m7_forget_vector(void);

// Sets one LEVEL_… field of g_vec_val to `level` (0 or 1).
void m7_set_level(u32 field, u32 level);

// Appends one character made from g_vec_val. Every append keeps the vector terminated, and finds
// its end without searching. One that does not fit grows the buffer, to what g_vector_size asks
// for; where that cannot be had the vector is given up: the failure is reported as by
// Quorlan_MemSet, and nothing is appended until the vector is emptied.
void Quorlan_GenVec(void);

// Appends one period that drives TDI 0 and the given TMS and expects 0.
void m7_append_tms(u32 tms);

// Appends a string of characters.
void m7_append_characters(const u8 *characters);

// Returns the number of characters in the vector; 0 without a buffer.
u32 m7_vector_length(void);

// Appends one period with the TMS level that leads to a state (numbers 1 to 14), TDI 0. Any other
// number is reported to the kernel log and has TMS 0.
void Quorlan_StateConfig(s32 state);

// Replaces the buffer by a new one of g_vector_size bytes and plays a reset of the TAP: ten
// periods with TMS high, one with TMS low, which end in Run-Test/Idle (IEEE 1149.1: five reach
// Test-Logic-Reset from any state). Returns 0.
s32 Quorlan_Reset(void);
}
