// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Records: '^', the length L in bits as a number, an opcode, a body; and the bodies that take more
// than a line to read. Each of those functions starts at g_pos and leaves g_pos after the body.
#pragma once

#include "kernel/kernel.h"

#define RECORD_MARK '^'

#define OPCODE_RESERVED_1 1
#define OPCODE_RUNTEST 4
#define OPCODE_RESERVED_5 5
#define OPCODE_RESERVED_6 6
#define OPCODE_FREQUENCY 7
#define OPCODE_TDR 9
#define OPCODE_TIR 10
#define OPCODE_HDR 11
#define OPCODE_HIR 12
#define OPCODE_SDR 13
#define OPCODE_SIR 14
#define OPCODE_RESERVED_19 19
#define OPCODE_LOOP '$'
#define OPCODE_ENDLOOP '%'

#define TAG_TDI 15
#define TAG_TDO 16
#define TAG_MASK 17
#define TAG_END 23

extern "C" {

// SIR and SDR: the register length in bits, then fields, each a tag (TDI, TDO or MASK) and a data
// block, then the end tag.

// Reads the body and plays it: OPCODE_SIR as an instruction shift, any other opcode as a data
// shift. A field that occurs twice replaces the earlier one, which is not freed. A block that
// cannot be decoded counts as absent; one that cannot be allocated stops the download, and nothing
// is shifted. Returns 0 whatever the shift's outcome (g_status tells), or RESULT_MALFORMED for an
// unknown tag, which leaves the blocks read so far allocated, and for a record that the image cuts
// off.
s32 Quorlan_ProcessSirAndSdrCommand(signed char opcode);

// Writes `count` bytes to the kernel log, last one first, each with its bits mirrored:
// " (", two hexadecimal digits a byte, ") ". Returns the last printk's result.
s32 Quorlan_PrintData(s32 count, const u8 *bytes);

// TDR, TIR, HDR and HIR: the register length in bits and, unless that is 0, the TDI tag, the bytes
// as they stand, and a closing byte that is not tested.

// Reads the body, stores length and bytes in the register of `opcode` (9 to 12), whose earlier
// bytes are freed, and rebuilds its vector. With a tag other than TDI the register has no bytes and
// its vector is zeros. When the vector cannot be allocated the download is stopped; length and
// bytes are stored. Returns 0; RESULT_NO_MEMORY when the bytes cannot be allocated;
// RESULT_MALFORMED for another opcode and for a record that the image cuts off. In these cases
// nothing is stored.
s32 Quorlan_ProcessHeadAndTrailerCommand(signed char opcode);

// Frees and clears the bytes of HDR, TIR and TDR, at the end of a command file. Those of HIR stay
// until another HIR record replaces them. This is deliberate.
void m7_release_padding_data(void);

// Frees and clears the bytes of all four, at unload.
void m7_release_all_padding_data(void);

// RUNTEST: after its gate byte, wait times and cycle counts in any order. The first byte that
// belongs to no field ends the record.

// Reads the fields and returns the sum of the TCK periods that they ask for; times are converted at
// g_freq. An unset g_freq becomes 1 MHz and stays so. A '^' that ends the record is
// left for the next one to read.
u64 Quorlan_ProcessRuntestCmd(void);
}
