// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The opcodes and tags of the file, and their names. Encodings have their own table: see
// tvb/encoding.h.
#pragma once

#include <cstdint>

namespace tvb {

// The byte that begins a record.
constexpr uint8_t kMark = '^';

// The opcodes of the file.
enum Opcode : uint8_t {
  kReserved1 = 1,
  kRunTest = 4,
  kReserved5 = 5,
  kReserved6 = 6,
  kFrequency = 7,
  kTdr = 9,
  kTir = 10,
  kHdr = 11,
  kHir = 12,
  kSdr = 13,
  kSir = 14,
  kReserved19 = 19,
  kLoop = '$',
  kEndLoop = '%',
};

// True for the opcodes of records that the player skips by their length.
bool IsReserved(uint8_t opcode);

// The tags of the fields inside a body. kTagPass and the two after it belong to run-tests.
enum Tag : uint8_t {
  kTagTdi = 15,
  kTagTdo = 16,
  kTagMask = 17,
  kTagPass = 19,
  kTagCycles = 20,
  kTagEnd = 23,
  kTagTime = 24,
};

// "SDR", "RUNTEST"; "RESERVED" for those that the player skips, "UNKNOWN" for any other value.
const char *OpcodeName(uint8_t opcode);

// "TDI", "TDO", "MASK", "PASS", "CYCLES", "END", "TIME"; "UNKNOWN" for any other value.
const char *TagName(uint8_t tag);

}  // namespace tvb
