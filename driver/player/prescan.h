// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The pre-scan: before a command file is played, its first record tells the target's place in the
// chain, and the target's IDCODE is read and logged.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// The target's position in the chain, counted from 1 at the TDI end, and the number of devices,
// as the last pre-scan found them.
extern u32 g_cur_level;
extern u32 g_total_level;

// Scans from g_pos, on a chain that was reset, then reads the IDCODE. A fault in a record only ends
// the scan, and a failed read is only logged; but a chain too long for any vector stops the
// download. Returns 0.
s32 Quorlan_ReadChipIdcode(void);

// Reads the body of an SIR record at g_pos and counts its bytes of all ones, one for each device
// in BYPASS: those shifted last, up to the first other byte, in `before` (the devices before the
// target), the rest in `after`. An instruction of 0xE0 sets g_idcode_pub to 224. Returns 1 when a
// byte was not all ones, else 0; also 0 when the end tag is missing, which is reported to the
// kernel log; RESULT_NO_MEMORY for a block that cannot be decoded; RESULT_BAD_HEADER when the first
// tag is not TDI, which is reported: g_pos is then moved back by as many bytes as the register has
// bits, less one. The decoded block is not freed.
s32 Quorlan_ReadSirInfo(u32 *after, u32 *before);
}
