// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Records: the frame that all of them share, and the bodies of those that carry register data.
#pragma once

#include <cstdint>
#include <functional>

#include "tvb/bytes.h"
#include "tvb/names.h"

namespace tvb {

// Puts one record at the end of `file`: the mark '^', its exact length in bits from the opcode to
// its last byte, 8 * (1 + body bytes), the opcode and `body`. Neither opcode nor body is looked at.
// Throws Error, with `file` untouched, for a body so long (2^28 - 1 bytes and more) that the length
// would be taken as negative.
void AppendRecord(Buffer &file, uint8_t opcode, Bytes body);

// What a shift record carries. Each of the three is empty (absent) or exactly BytesOfBits(bits)
// long; their bit order is told at Bytes.
struct Shift {
  uint32_t bits = 0;
  Bytes tdi;   // must be there if bits > 0
  Bytes tdo;   // the expected bits
  Bytes mask;  // which of them are compared; needs tdo

  // What the encoder may choose: TDI bits that have a 0 in `care`, if that is not empty; and TDO
  // bits that are not compared.
  Bytes care = {};
  bool free_tdo = false;
};

// How the data of a shift goes into the file: puts the data block of `bits` register bits at the
// end of `out`. Bits that have a 0 in `care`, which is empty or of the same size, may be anything.
using Encoder = std::function<void(Buffer &out, uint32_t bits, Bytes data, Bytes care)>;

// The body of an SIR or SDR record. `encode`: none in a file of plain blocks, where data stands as
// it is. Throws Error if a field has another size than `bits` asks for, if TDI is missing (the
// player would have nothing to shift), or for a mask without TDO (the player would compare with
// zeros that nobody wrote down).
Buffer ShiftBody(const Shift &shift, const Encoder &encode);

// The body of an HIR, TIR, HDR or TDR record: the bits of a header or trailer register, always
// stored raw. `bits` 0 and no data take the register away. Throws Error if `data` is not exactly
// BytesOfBits(bits) long.
Buffer PadBody(uint32_t bits, Bytes data);

// The body of a record that is one number.
Buffer NumberBody(uint32_t value);

// The body of a run-test of `microseconds` and then `cycles` more; either may be 0. The player adds
// up the clocks of both.
//
// Every number of cycles is exact. A time longer than kMaxMicroseconds that is no whole number of
// milliseconds takes two fields. Since the player rounds the clocks of each down, two of them could
// give one clock less than the whole time would; one cycle is added there, unless
// `whole_kilohertz`, when nothing is lost. So a time is never cut short. The limits stand in
// player.h.
//
// Throws Error for more than kMaxCycles or a longer time than kMaxTime.
Buffer RunTestBody(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz);

// The clocks that the player makes of that body at a frequency of `hz`.
uint64_t RunTestClocks(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz, uint32_t hz);

// The body of a run-test that does not run: it drives no line and changes nothing.
Buffer IdleRunTestBody();

}  // namespace tvb
