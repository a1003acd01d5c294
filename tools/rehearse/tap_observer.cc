// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/tap_observer.h"

#include <cstddef>

namespace tool {
namespace {

struct Row {
  TapState next[2];  // by the level of TMS
  std::string_view name;
};

using S = TapState;

constexpr Row kRows[kTapStates] = {
    {{S::kRunTestIdle, S::kTestLogicReset}, "Test-Logic-Reset"},
    {{S::kRunTestIdle, S::kSelectDrScan}, "Run-Test/Idle"},
    {{S::kCaptureDr, S::kSelectIrScan}, "Select-DR-Scan"},
    {{S::kShiftDr, S::kExit1Dr}, "Capture-DR"},
    {{S::kShiftDr, S::kExit1Dr}, "Shift-DR"},
    {{S::kPauseDr, S::kUpdateDr}, "Exit1-DR"},
    {{S::kPauseDr, S::kExit2Dr}, "Pause-DR"},
    {{S::kShiftDr, S::kUpdateDr}, "Exit2-DR"},
    {{S::kRunTestIdle, S::kSelectDrScan}, "Update-DR"},
    {{S::kCaptureIr, S::kTestLogicReset}, "Select-IR-Scan"},
    {{S::kShiftIr, S::kExit1Ir}, "Capture-IR"},
    {{S::kShiftIr, S::kExit1Ir}, "Shift-IR"},
    {{S::kPauseIr, S::kUpdateIr}, "Exit1-IR"},
    {{S::kPauseIr, S::kExit2Ir}, "Pause-IR"},
    {{S::kShiftIr, S::kUpdateIr}, "Exit2-IR"},
    {{S::kRunTestIdle, S::kSelectDrScan}, "Update-IR"},
};

const Row &RowOf(TapState state) {
  return kRows[static_cast<size_t>(state)];
}

}  // namespace

TapState NextState(TapState state, bool tms) {
  return RowOf(state).next[tms];
}

std::string_view NameOf(TapState state) {
  return RowOf(state).name;
}

std::string_view NameOf(Register which) {
  return which == Register::kIr ? "IR" : "DR";
}

TapState TapObserver::Rise(bool tms) {
  if (shifting()) {
    ++bits_;
  }
  state_ = NextState(state_, tms);
  if (state_ == TapState::kCaptureIr || state_ == TapState::kCaptureDr) {
    register_ = state_ == TapState::kCaptureIr ? Register::kIr : Register::kDr;
    bits_ = 0;
    ++scan_;
  }
  return state_;
}

}  // namespace tool
