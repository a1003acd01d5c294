// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data blocks: the register bytes in shift records, raw or in one of four encodings. The record,
// not the block, says how many bytes it decodes to. Every decoder reads the image forward from
// g_pos and leaves g_pos after the block.
//
// A decoder returns a new buffer of `count` + 1 bytes, which the caller frees with kfree. Bytes
// that the block does not produce stay unwritten. Null when out of memory (g_alloc_failures counts
// it) or when `count` is below -1.
#pragma once

#include "kernel/kernel.h"

// The header's compression byte for files whose blocks are all raw, without a mode byte.
#define COMPRESS_NONE 0xF2

extern "C" {

// Decodes a block to `byte_count` bytes: raw, or by its mode byte (0 raw, 1 run-length, 2 nibble
// repetition, 3 one-symbol bit coding, 4 LZW). After raw bytes the last byte is 0. Null also for an
// unknown mode, which is reported to the kernel log.
u8 *Quorlan_ProcessData(u32 byte_count);

// Reads the number at g_pos (player/reader.h gives its encoding), signed.
s64 Quorlan_NumberDecode(void);

// Run-length: an escape byte E, then items. Any byte but E stands for itself; E and a number r
// stand for r + 1 times E; what goes past `count` is dropped.
u8 *Quorlan_BytesDecode(s64 count);

// Nibble repetition: a number m, then the ceil(m / 2) bytes of a pattern of m nibbles, high nibble
// first. Only whole repetitions are written, of the pattern for an even m and of the pattern twice
// for an odd one. A failed allocation for the pattern is reported to the kernel log.
u8 *Quorlan_NibbleDecode(s64 count);

// One-symbol bit coding: a symbol byte S, then a stream of bits, each byte most significant first.
// A 0 stands for S, a 1 and eight bits, most significant first, for a literal byte; the low bits
// left in the last byte are dropped.
u8 *Quorlan_HuffmanDecode(s64 count);

// LZW: a stream as in lzw_lib.h. Bytes past `count` + 1 are dropped; a stream that fails is not
// reported.
u8 *Quorlan_LzwDecode(s64 count);

// The buffer that the last LZW stream was decoded into, and the number of bytes written to it.
extern u8 *g_pWriteBuffer;
extern s64 g_iWriteCount;

// Returns the byte at g_pos and advances g_pos; past the end of the image ~0 (-1).
u32 Quorlan_ReadTvbByte(void);

// Appends the low 8 bits of `byte` to g_pWriteBuffer. While Quorlan_LzwDecode runs, bytes that do
// not fit are dropped; otherwise there is no bound.
void Quorlan_WriteBufferByte(u32 byte);
}
