// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/names.h"

#include <algorithm>
#include <iterator>
#include <string_view>

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

template <size_t size>
const char *NameIn(const Row (&table)[size], uint8_t value) {
  const auto row = std::find_if(std::begin(table), std::end(table),
                                [value](const Row &each) { return each.value == value; });
  return row != std::end(table) ? row->name : kUnknown;
}

}  // namespace

bool IsReserved(uint8_t opcode) {
  return std::string_view(OpcodeName(opcode)) == kReserved;
}

const char *OpcodeName(uint8_t opcode) {
  return NameIn(kOpcodes, opcode);
}

const char *TagName(uint8_t tag) {
  return NameIn(kTags, tag);
}

}  // namespace tvb
