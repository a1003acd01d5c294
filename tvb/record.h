// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Records: the frame common to all, and the bodies of those that carry register data or a number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "tvb/bytes.h"
#include "tvb/names.h"
#include "tvb/number.h"

namespace tvb {

// Appends one record to `file`: the mark '^', the exact length in bits from the opcode to the last
// byte, 8 * (1 + body bytes), the opcode and `body`. Neither opcode nor body is checked. Throws
// Error, with `file` unchanged, for a body so long (2^28 - 1 bytes or more) that the length would
// be read as negative.
void AppendRecord(Buffer &file, uint8_t opcode, Bytes body);

// The most bytes in front of a record's body: mark, length and opcode.
constexpr size_t kRecordFront = 1 + kMaxNumberSize + 1;

// Makes a record of a body with room for kRecordFront bytes, whatever they are, in front of it.
// Returns the record, which ends where the body ends. Throws as AppendRecord().
Bytes FrameRecord(Buffer &record, uint8_t opcode);

// The contents of a shift record. TDI, TDO and mask are each empty (absent) or exactly
// BytesOfBits(bits) long; see Bytes for the bit order.
struct Shift {
  uint32_t bits = 0;
  Bytes tdi;   // required if bits > 0
  Bytes tdo;   // the expected bits
  Bytes mask;  // which TDO bits are compared; needs tdo

  // What the encoder may choose: TDI bits with a 0 in `care`, if that is not empty, and TDO bits
  // that are not compared.
  Bytes care = {};
  bool free_tdo = false;
};

// Appends the data block of `bits` register bits to `out`. Bits with a 0 in `care`, which is empty
// or of the same size, may have any value.
using Encoder = std::function<void(Buffer &out, uint32_t bits, Bytes data, Bytes care)>;

// Appends the body of an SIR or SDR record. `encode`: none in a file of plain blocks, which stores
// data as it is. Throws Error if the size of a field does not match `bits`, if TDI is missing (the
// player would have nothing to shift), or for a mask without TDO (the player would compare with
// zeros that nobody wrote).
void AppendShiftBody(Buffer &body, const Shift &shift, const Encoder &encode);

// The body of an HIR, TIR, HDR or TDR record: the bits of a header or trailer register, always
// stored raw. `bits` 0 and no data remove the register. Throws Error if `data` is not exactly
// BytesOfBits(bits) long.
Buffer PadBody(uint32_t bits, Bytes data);

// The body of a record that consists of one number.
Buffer NumberBody(uint32_t value);

// The body of a run-test of `microseconds` plus `cycles`; either may be 0. The player adds the
// clocks of both.
//
// Every number of cycles is exact. A time above kMaxMicroseconds that is not a whole number of
// milliseconds takes two fields. The player rounds the clocks of each field down, so two fields
// could give one clock less than the whole time; one cycle is added to make up for it, unless
// `whole_kilohertz`, when nothing is lost. So a time is never cut short. See player.h for the
// limits.
//
// Throws Error for more than kMaxCycles or a longer time than kMaxTime.
Buffer RunTestBody(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz);

// The number of clocks that the player runs for that body at a frequency of `hz`.
uint64_t RunTestClocks(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz, uint32_t hz);

// The body of a run-test that does not run: it drives no pin and changes no state.
Buffer IdleRunTestBody();

}  // namespace tvb
