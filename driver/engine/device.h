// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads of one device in a chain, without a command file: its IDCODE and the levels of its IO pins.
// Also the end of a session, which frees what the engine holds.
//
// `level` is the target's position, counted from 1 at the TDI end, and `total` the number of
// devices. Every device has an 8-bit instruction register; those not addressed are in BYPASS,
// with a 1-bit data register (IEEE 1149.1: all ones select it).
#pragma once

#include "kernel/kernel.h"

extern "C" {

// The instruction that selects the IDCODE register. 6 at load; the pre-scan of a command file may
// set it to 224, and it stays so.
extern u32 g_idcode_pub;

// The last IDCODE read: a bit string, most significant bit first, or null. Freed by
// Quorlan_FreeMemory; a later read overwrites it without freeing it.
extern u8 *g_chip_idcode;

// Loads the low 8 bits of `instruction` (bit 0 shifted first) into the target and all ones into
// the others. With a level outside the chain all devices get ones. Nothing is compared. Shifts
// nothing when out of memory.
void Quorlan_ExeSirCommand(u32 level, u32 total, u32 instruction);

// Shifts ones through the chain and returns `bits` bits of the target's data register as a new
// bit string, last one read first, which the caller frees with kfree. Null when nothing was read
// or when out of memory.
u8 *Quorlan_ExeSdrRdbkCommand(u32 level, u32 total, s32 bits);

// Reads the target's IDCODE into g_chip_idcode and logs it, or why it could not be read: five
// records, "DECODE CHIP : " and four bytes in hexadecimal, most significant first.
void Quorlan_ReadIdCode(u32 level, u32 total);

// The number of IO-status bits; 0 at load, and nothing in the module sets it.
extern u32 g_io_len;

// The last IO status read: a bit string, last bit read first, or null.
extern u8 *g_chip_io_status;

// The reference, one character an IO ('x': not watched), or null. Nothing in the module sets it.
// Both strings are freed by Quorlan_FreeMemory.
extern u8 *g_watch_ios;

// Reads g_io_len bits into g_chip_io_status. A failure or a string of another length is reported to
// the kernel log. Does nothing when g_io_len is 0.
void Quorlan_ReadIOStatus(u32 level, u32 total);

// Prints to the kernel log a row for every watched IO: its index in the reference, which is the
// order of reading, the reference, the level read, and whether the two agree. In a string shorter
// than g_io_len the terminator counts as an IO; beyond it there are no rows.
void Quorlan_PrintIOStatus(void);

// Frees and clears what the engine holds for a download: the vector, the four header/trailer
// vectors, the IDCODE and IO-status strings and the IO reference. Calling it again is harmless.
void Quorlan_FreeMemory(void);
}
