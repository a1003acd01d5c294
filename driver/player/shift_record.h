// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// SIR and SDR records: the register length in bits, then fields, each a tag (TDI, TDO or MASK) and
// a data block, then the end tag.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Reads the body of a shift record at g_pos and plays it: OPCODE_SIR as an instruction shift, any
// other opcode as a data shift. A field that occurs twice replaces the earlier one, which is not
// freed. A block that cannot be decoded counts as absent; one for which memory was wanting, or
// which asks for more than there can be, stops the download, and nothing is shifted.
// Returns 0 whatever the shift's outcome (see g_status), or RESULT_MALFORMED for an unknown tag,
// the blocks read so far not being freed, or a record that the image cuts off.
s32 Quorlan_ProcessSirAndSdrCommand(signed char opcode);

// Writes `count` bytes to the kernel log, last one first, each with its bits mirrored:
// " (", two hexadecimal digits a byte, ") ". Returns the last printk's result.
s32 Quorlan_PrintData(s32 count, const u8 *bytes);
}
