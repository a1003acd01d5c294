// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The header of a command file:
//   'a', 2 bytes, 8 bytes, the compression byte, 'b', a number, 'V', 1
// and right after it the first record.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// The header's compression byte; COMPRESS_NONE (decode/block.h) means raw data blocks throughout.
extern u8 g_compress;

// Index of the first record.
extern u64 g_cfg_start_pos;

// Checks the header from index 0 on. Returns 0 with g_cfg_start_pos and g_pos at the first
// record, or RESULT_BAD_HEADER; g_compress is set once the compression byte was reached.
s32 Quorlan_ReadTvbHeader(void);
}
