// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/text.h"

#include "tvb/record.h"

namespace tvb {

std::string Hex(uint64_t value) {
  std::string digits;
  do {
    digits.insert(digits.begin(), "0123456789ABCDEF"[value % 16]);
    value /= 16;
  } while (value != 0);
  return (digits.size() < 2 ? "0x0" : "0x") + digits;
}

std::string NumberText(const NumberView &number) {
  return number.lossy ? "a number of more than 32 bits" : std::to_string(number.value);
}

std::string LengthText(const NumberView &length) {
  return length.lossy ? "a length that takes more than 32 bits"
                      : "a length of " + std::to_string(length.value) + " bits";
}

std::string Count(uint64_t count, const std::string &noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

const char *OpcodeName(uint8_t opcode) {
  switch (opcode) {
    case kReserved1:
    case kReserved5:
    case kReserved6:
    case kReserved19:
      return "RESERVED";
    case kRunTest:
      return "RUNTEST";
    case kFrequency:
      return "FREQUENCY";
    case kTdr:
      return "TDR";
    case kTir:
      return "TIR";
    case kHdr:
      return "HDR";
    case kHir:
      return "HIR";
    case kSdr:
      return "SDR";
    case kSir:
      return "SIR";
    case kLoop:
      return "LOOP";
    case kEndLoop:
      return "ENDLOOP";
  }
  return "UNKNOWN";
}

const char *TagName(uint8_t tag) {
  switch (tag) {
    case kTagTdi:
      return "TDI";
    case kTagTdo:
      return "TDO";
    case kTagMask:
      return "MASK";
    case kTagPass:
      return "PASS";
    case kTagCycles:
      return "CYCLES";
    case kTagEnd:
      return "END";
    case kTagTime:
      return "TIME";
  }
  return "UNKNOWN";
}

}  // namespace tvb
