// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The bytes that structure a record: '^', its length L in bits as a number, an opcode, a body.
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

// Returns the number of bytes that hold `bits` bits.
static inline u32 bytes_for_bits(u32 bits) {
  return (bits >> 3) + ((bits & 7) != 0);
}
