// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The states of the TAP: the names that SVF has for them, those of IEEE 1149.1, and which follows
// which.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace svf {

// In the order of the standard's state diagram; the data column's states and the instruction
// column's stand in the same order.
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

// "IRPAUSE".
std::string_view Name(TapState state);

// "Pause-IR"; at most 16 characters.
std::string_view StandardName(TapState state);

// The state of that name, in capitals or not.
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

// The state after one TCK with that level of TMS.
TapState After(TapState state, bool tms);

// True if one TCK can lead from one state to the other.
inline bool Leads(TapState from, TapState to) {
  return After(from, false) == to || After(from, true) == to;
}

}  // namespace svf
