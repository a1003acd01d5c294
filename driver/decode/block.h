// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data blocks: the register bytes in shift records, raw or in one of four encodings. A block does
// not say how many bytes it decodes to; that comes from its record. Every decoder reads the image
// forward from g_pos and leaves g_pos after the block.
#pragma once

#include "kernel/kernel.h"

// The header's compression byte that means: every block is raw, without a mode byte.
#define COMPRESS_NONE 0xF2

extern "C" {

// Decodes the block at g_pos to `byte_count` bytes: raw, or by its mode byte (0 raw, 1 run-length,
// 2 nibble repetition, 3 one-symbol bit coding, 4 LZW).
// Returns a new block of byte_count + 1 bytes, the last one 0 after raw bytes and unwritten
// otherwise, which the caller frees with kfree. Null when memory cannot be had (g_alloc_failures
// tells), or for an unknown mode, which is reported to the kernel log.
u8 *Quorlan_ProcessData(u32 byte_count);

// Reads the number at g_pos (player/reader.h gives its encoding), signed.
s64 Quorlan_NumberDecode(void);

// Returns a new block for `count` decoded bytes and one more, not zeroed; null for a negative count
// or when memory cannot be had.
u8 *m7_alloc_decoded(s64 count);
}
