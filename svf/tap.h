// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The states of the TAP: their names in SVF and in IEEE 1149.1, and the transitions between them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace svf {

// In the order of the standard's state diagram; the states of the data column and of the
// instruction column are in the same order.
enum class TapState : uint8_t {
  kReset,
  kIdle,
  kDrSelect,
  kDrCapture,
  kDrShift,
  kDrExit1,
  kDrPause,
  kDrExit2,
  kDrUpdate,
  kIrSelect,
  kIrCapture,
  kIrShift,
  kIrExit1,
  kIrPause,
  kIrExit2,
  kIrUpdate,
};
constexpr int kTapStates = 16;

// The names and transitions of a state.
struct TapRow {
  std::string_view name;           // SVF's: "IRPAUSE"
  std::string_view standard_name;  // the standard's: "Pause-IR"; at most 16 characters
  TapState low;                    // the state after a TCK with TMS 0
  TapState high;                   // the state after a TCK with TMS 1
};

// In the order of the enumeration.
inline constexpr TapRow kTapTable[kTapStates] = {
    {"RESET", "Test-Logic-Reset", TapState::kIdle, TapState::kReset},
    {"IDLE", "Run-Test/Idle", TapState::kIdle, TapState::kDrSelect},
    {"DRSELECT", "Select-DR-Scan", TapState::kDrCapture, TapState::kIrSelect},
    {"DRCAPTURE", "Capture-DR", TapState::kDrShift, TapState::kDrExit1},
    {"DRSHIFT", "Shift-DR", TapState::kDrShift, TapState::kDrExit1},
    {"DREXIT1", "Exit1-DR", TapState::kDrPause, TapState::kDrUpdate},
    {"DRPAUSE", "Pause-DR", TapState::kDrPause, TapState::kDrExit2},
    {"DREXIT2", "Exit2-DR", TapState::kDrShift, TapState::kDrUpdate},
    {"DRUPDATE", "Update-DR", TapState::kIdle, TapState::kDrSelect},
    {"IRSELECT", "Select-IR-Scan", TapState::kIrCapture, TapState::kReset},
    {"IRCAPTURE", "Capture-IR", TapState::kIrShift, TapState::kIrExit1},
    {"IRSHIFT", "Shift-IR", TapState::kIrShift, TapState::kIrExit1},
    {"IREXIT1", "Exit1-IR", TapState::kIrPause, TapState::kIrUpdate},
    {"IRPAUSE", "Pause-IR", TapState::kIrPause, TapState::kIrExit2},
    {"IREXIT2", "Exit2-IR", TapState::kIrShift, TapState::kIrUpdate},
    {"IRUPDATE", "Update-IR", TapState::kIdle, TapState::kDrSelect},
};

inline const TapRow &RowOf(TapState state) {
  return kTapTable[static_cast<int>(state)];
}

inline std::string_view Name(TapState state) {
  return RowOf(state).name;
}
inline std::string_view StandardName(TapState state) {
  return RowOf(state).standard_name;
}

// The state after one TCK with this level of TMS.
inline TapState After(TapState state, bool tms) {
  return tms ? RowOf(state).high : RowOf(state).low;
}

// The state with this name, in any case; none if there is no such state.
std::optional<TapState> FindTapState(std::string_view name);

// True for the four states that a statement may end in: RESET, IDLE, IRPAUSE and DRPAUSE.
bool IsStable(TapState state);

// True for IRPAUSE and DRPAUSE.
bool IsPause(TapState state);

// True for the two states of that name.
inline bool IsCapture(TapState state) {
  return state == TapState::kIrCapture || state == TapState::kDrCapture;
}
inline bool IsShift(TapState state) {
  return state == TapState::kIrShift || state == TapState::kDrShift;
}
inline bool IsUpdate(TapState state) {
  return state == TapState::kIrUpdate || state == TapState::kDrUpdate;
}

// True if one TCK can lead from one state to the other.
inline bool Leads(TapState from, TapState to) {
  return After(from, false) == to || After(from, true) == to;
}

}  // namespace svf
