// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The pre-scan: before a command file is played, a look at its first record tells where in the
// chain the target sits, and the target's IDCODE is read and logged.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// The target's position in the chain, counted from 1 at the TDI end, and the number of devices,
// as the last pre-scan found them.
extern u32 g_cur_level;
extern u32 g_total_level;

// Scans from g_pos, on a chain that was reset, then reads the IDCODE. Whatever the scan meets
// only shortens it, and a failed read is only logged; but a chain so long that no vector can reach
// through it stops the download. Returns 0.
s32 Quorlan_ReadChipIdcode(void);

// Reads the body of an SIR record at g_pos and counts its bytes of all ones, one for each device
// in BYPASS: those shifted last, up to the first other byte, in `before`, the rest in `after`. An
// instruction of 0xE0 sets g_idcode_pub to 224. Returns 1 when a byte was not all ones, else 0;
// 0 also, reported to the kernel log, when the end tag is missing; RESULT_NO_MEMORY for a block
// that cannot be decoded; RESULT_BAD_HEADER, reported, when the first tag is not TDI, and then
// g_pos has gone back by the register's length less one, as bytes. The decoded block is not
// freed.
s32 Quorlan_ReadSirInfo(u32 *after, u32 *before);
}
