// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/names.h"

#include <array>
#include <cstddef>

namespace tvb {
namespace {

struct Row {
  uint8_t value;
  const char *name;
};

constexpr const char *kReserved = "RESERVED";
constexpr const char *kUnknown = "UNKNOWN";

constexpr Row kOpcodes[] = {
    {kReserved1, kReserved},
    {kRunTest, "RUNTEST"},
    {kReserved5, kReserved},
    {kReserved6, kReserved},
    {kFrequency, "FREQUENCY"},
    {kTdr, "TDR"},
    {kTir, "TIR"},
    {kHdr, "HDR"},
    {kHir, "HIR"},
    {kSdr, "SDR"},
    {kSir, "SIR"},
    {kReserved19, kReserved},
    {kLoop, "LOOP"},
    {kEndLoop, "ENDLOOP"},
};

constexpr Row kTags[] = {
    {kTagTdi, "TDI"},       {kTagTdo, "TDO"}, {kTagMask, "MASK"}, {kTagPass, "PASS"},
    {kTagCycles, "CYCLES"}, {kTagEnd, "END"}, {kTagTime, "TIME"},
};

using Names = std::array<const char *, 256>;

template <size_t size>
constexpr Names NamesIn(const Row (&table)[size]) {
  Names names{};
  names.fill(kUnknown);
  for (const Row &row : table) {
    names[row.value] = row.name;
  }
  return names;
}

constexpr Names kOpcodeNames = NamesIn(kOpcodes);
constexpr Names kTagNames = NamesIn(kTags);

}  // namespace

bool IsReserved(uint8_t opcode) {
  return OpcodeName(opcode) == kReserved;
}

const char *OpcodeName(uint8_t opcode) {
  return kOpcodeNames[opcode];
}

const char *TagName(uint8_t tag) {
  return kTagNames[tag];
}

}  // namespace tvb
