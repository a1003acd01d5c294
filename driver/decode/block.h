// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data blocks: the register bytes in shift records, raw or in one of four encodings. A block does
// not say how many bytes it decodes to; that comes from its record. Every decoder reads the image
// forward from g_pos and leaves g_pos after the block.
//
// A decoder returns a new block of one byte more than it was asked for, which the caller frees with
// kfree. Bytes that its encoding does not produce stay unwritten. Null when memory cannot be had
// (g_alloc_failures tells) or the count is below -1.
#pragma once

#include "kernel/kernel.h"

// The header's compression byte that means: every block is raw, without a mode byte.
#define COMPRESS_NONE 0xF2

extern "C" {

// Decodes a block to `byte_count` bytes: raw, or by its mode byte (0 raw, 1 run-length, 2 nibble
// repetition, 3 one-symbol bit coding, 4 LZW). After raw bytes the last byte is 0. Null also for an
// unknown mode, which is reported to the kernel log.
u8 *Quorlan_ProcessData(u32 byte_count);

// Reads the number at g_pos (player/reader.h gives its encoding), signed.
s64 Quorlan_NumberDecode(void);

// Run-length: an escape byte E, then items. Any byte but E stands for itself; E and a number r
// stand for r + 1 times E, what goes past `count` being dropped.
u8 *Quorlan_BytesDecode(s64 count);

// Nibble repetition: a number m, then the ceil(m / 2) bytes of a pattern of m nibbles, high nibble
// first. Only whole repetitions are written, of the pattern for an even m and of the pattern twice
// for an odd one. Want of memory for the pattern is reported to the kernel log.
u8 *Quorlan_NibbleDecode(s64 count);

// One-symbol bit coding: a symbol byte S, then a stream of bits, each byte most significant first.
// A 0 stands for S, a 1 and eight bits, most significant first, for a literal byte; the low bits
// left in the last byte are dropped.
u8 *Quorlan_HuffmanDecode(s64 count);

// LZW: a stream of lzw_lib.h. What it has more than `count` + 1 bytes is dropped; that it fails is
// not told.
u8 *Quorlan_LzwDecode(s64 count);

// The block of the LZW stream that is decoded, and the number of bytes written into it.
extern u8 *g_pWriteBuffer;
extern s64 g_iWriteCount;

// Returns the byte at g_pos and advances g_pos; past the end of the image ~0 (-1).
u32 Quorlan_ReadTvbByte(void);

// Appends the low 8 bits of `byte` to g_pWriteBuffer. While Quorlan_LzwDecode runs, a byte that
// its block has no room for is dropped; otherwise there is no bound.
void Quorlan_WriteBufferByte(u32 byte);
}
