// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The levels of a chip's IO pins: read through the IO-status register, printed against a
// reference.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Number of IO-status bits; 0 at load, and nothing in the module sets it.
extern u32 g_io_len;

// The IO status as it was read: a bit string, last bit read first, or null.
extern u8 *g_chip_io_status;

// The reference, one character an IO ('x': not watched), or null. Nothing in the module sets it.
// Both strings are freed by Quorlan_FreeMemory.
extern u8 *g_watch_ios;

// Reads g_io_len bits into g_chip_io_status (level and total as in engine/device.h). A failure or
// a string of another length is reported to the kernel log. Does nothing when g_io_len is 0.
void Quorlan_ReadIOStatus(u32 level, u32 total);

// Prints to the kernel log a row for every watched IO, i being its place in the reference and in
// the order of reading: reference, level read, and whether they agree.
void Quorlan_PrintIOStatus(void);
}
