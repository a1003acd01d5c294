// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Playing a finished vector on the lines.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Both play g_vector, one TCK period a character: TCK low, TDI, TMS, TDO, TCK high. The data
// range is the characters with start <= index < end. TDI is driven only there; elsewhere it keeps
// its last level. TMS is driven up to index start and from index end - 1 (unsigned 32-bit) on; in
// between it keeps its level. Bit d of `mask` (in the order of util/bit_string.h; null: none) says
// whether TDO is read at index start + d. They play nothing when the vector is empty or g_status is
// not 1, and stop when it changes. Those that are given the length of g_vector do not search for
// its end.

// Compares what it reads with the character's expected level. At the first difference it logs
// "Verify Failed\r\n", stops the download and returns with TCK low.
void Quorlan_Transfer(const u8 *mask, u32 start, u32 end);
void m7_transfer(const u8 *mask, u32 start, u32 end, u32 length);

// Returns what it read as a new string of '0' + value, last read first, which the caller frees
// with kfree. Null when nothing was read, g_status was cleared, or when out of memory; when the
// capture's end - start + 1 bytes (unsigned 32-bit) cannot be allocated nothing is played.
u8 *Quorlan_TransferAndReadTDO(const u8 *mask, u32 start, u32 end);
u8 *m7_transfer_and_read(const u8 *mask, u32 start, u32 end, u32 length);
}
