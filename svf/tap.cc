// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/tap.h"

#include <array>
#include <cstddef>

#include "svf/text.h"

namespace svf {
namespace {

struct Row {
  std::string_view name;
  std::string_view standard_name;
  TapState low;   // after a TCK with TMS 0
  TapState high;  // after one with TMS 1
};

using S = TapState;

// In the order of the enumeration.
constexpr std::array<Row, kTapStates> kTable = {{
    {"RESET", "Test-Logic-Reset", S::kIdle, S::kReset},
    {"IDLE", "Run-Test/Idle", S::kIdle, S::kDrSelect},
    {"DRSELECT", "Select-DR-Scan", S::kDrCapture, S::kIrSelect},
    {"DRCAPTURE", "Capture-DR", S::kDrShift, S::kDrExit1},
    {"DRSHIFT", "Shift-DR", S::kDrShift, S::kDrExit1},
    {"DREXIT1", "Exit1-DR", S::kDrPause, S::kDrUpdate},
    {"DRPAUSE", "Pause-DR", S::kDrPause, S::kDrExit2},
    {"DREXIT2", "Exit2-DR", S::kDrShift, S::kDrUpdate},
    {"DRUPDATE", "Update-DR", S::kIdle, S::kDrSelect},
    {"IRSELECT", "Select-IR-Scan", S::kIrCapture, S::kReset},
    {"IRCAPTURE", "Capture-IR", S::kIrShift, S::kIrExit1},
    {"IRSHIFT", "Shift-IR", S::kIrShift, S::kIrExit1},
    {"IREXIT1", "Exit1-IR", S::kIrPause, S::kIrUpdate},
    {"IRPAUSE", "Pause-IR", S::kIrPause, S::kIrExit2},
    {"IREXIT2", "Exit2-IR", S::kIrShift, S::kIrUpdate},
    {"IRUPDATE", "Update-IR", S::kIdle, S::kDrSelect},
}};

const Row &RowOf(TapState state) {
  return kTable[static_cast<size_t>(state)];
}

}  // namespace

std::string_view Name(TapState state) {
  return RowOf(state).name;
}

std::string_view StandardName(TapState state) {
  return RowOf(state).standard_name;
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
