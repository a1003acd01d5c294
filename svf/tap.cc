// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/tap.h"

#include <array>
#include <cstddef>

#include "svf/text.h"

namespace svf {
namespace {

struct Row {
  std::string_view name;
  TapState low;   // after a TCK with TMS 0
  TapState high;  // after one with TMS 1
};

using S = TapState;

// In the order of the enumeration.
constexpr std::array<Row, 16> kTable = {{
    {"RESET", S::kIdle, S::kReset},
    {"IDLE", S::kIdle, S::kDrSelect},
    {"DRSELECT", S::kDrCapture, S::kIrSelect},
    {"DRCAPTURE", S::kDrShift, S::kDrExit1},
    {"DRSHIFT", S::kDrShift, S::kDrExit1},
    {"DREXIT1", S::kDrPause, S::kDrUpdate},
    {"DRPAUSE", S::kDrPause, S::kDrExit2},
    {"DREXIT2", S::kDrShift, S::kDrUpdate},
    {"DRUPDATE", S::kIdle, S::kDrSelect},
    {"IRSELECT", S::kIrCapture, S::kReset},
    {"IRCAPTURE", S::kIrShift, S::kIrExit1},
    {"IRSHIFT", S::kIrShift, S::kIrExit1},
    {"IREXIT1", S::kIrPause, S::kIrUpdate},
    {"IRPAUSE", S::kIrPause, S::kIrExit2},
    {"IREXIT2", S::kIrShift, S::kIrUpdate},
    {"IRUPDATE", S::kIdle, S::kDrSelect},
}};

const Row &RowOf(TapState state) {
  return kTable[static_cast<size_t>(state)];
}

}  // namespace

std::string_view Name(TapState state) {
  return RowOf(state).name;
}

std::optional<TapState> FindTapState(std::string_view name) {
  for (size_t i = 0; i < kTable.size(); ++i) {
    if (IsWord(name, kTable[i].name)) {
      return static_cast<TapState>(i);
    }
  }
  return std::nullopt;
}

bool IsStable(TapState state) {
  return state == S::kReset || state == S::kIdle || IsPause(state);
}

bool IsPause(TapState state) {
  return state == S::kIrPause || state == S::kDrPause;
}

TapState After(TapState state, bool tms) {
  return tms ? RowOf(state).high : RowOf(state).low;
}

}  // namespace svf
