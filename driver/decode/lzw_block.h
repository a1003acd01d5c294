// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The decompressor of lzw_lib.h on the image of a command file.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// The block that is decoded and the number of bytes written into it.
extern u8 *g_pWriteBuffer;
extern s64 g_iWriteCount;

// Decodes an LZW stream at g_pos into a block for `count` bytes. Result as for
// Quorlan_ProcessData; what the stream does not reach stays unwritten, what it has more is
// dropped.
u8 *Quorlan_LzwDecode(s64 count);

// Returns the byte at g_pos and advances g_pos; past the end of the image ~0 (-1).
u32 Quorlan_ReadTvbByte(void);

// Appends the low 8 bits of `byte` to g_pWriteBuffer. While Quorlan_LzwDecode runs, a byte that
// its block has no room for is dropped; otherwise there is no bound.
void Quorlan_WriteBufferByte(u32 byte);
}
