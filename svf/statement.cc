// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/statement.h"

namespace svf {

std::string_view Name(Register which) {
  constexpr std::string_view kNames[kRegisters] = {"SIR", "SDR", "HIR", "TIR", "HDR", "TDR"};
  return kNames[static_cast<size_t>(which)];
}

std::string_view Name(Field field) {
  constexpr std::string_view kNames[kFields] = {"TDI", "TDO", "MASK", "SMASK"};
  return kNames[static_cast<size_t>(field)];
}

}  // namespace svf
