// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Where the TAP controller of IEEE 1149.1 is, as told from TMS at the rising edges of TCK.
#pragma once

#include <cstdint>
#include <string_view>

namespace tool {

// In the order of the standard's state diagram; the data column's states and the instruction
// column's stand in the same order.
enum class TapState : uint8_t {
  kTestLogicReset,
  kRunTestIdle,
  kSelectDrScan,
  kCaptureDr,
  kShiftDr,
  kExit1Dr,
  kPauseDr,
  kExit2Dr,
  kUpdateDr,
  kSelectIrScan,
  kCaptureIr,
  kShiftIr,
  kExit1Ir,
  kPauseIr,
  kExit2Ir,
  kUpdateIr,
};
constexpr int kTapStates = 16;

enum class Register : uint8_t { kIr, kDr };

// The state that follows `state` at a rising edge with TMS at `tms`.
TapState NextState(TapState state, bool tms);

// The standard's name of a state, as "Run-Test/Idle"; at most 16 characters.
std::string_view NameOf(TapState state);

// "IR" or "DR".
std::string_view NameOf(Register which);

// A TAP controller that starts in Test-Logic-Reset, and the scan that it is in. A scan goes from
// its Capture to its Update; one that is left through Test-Logic-Reset cannot be.
class TapObserver {
 public:
  // A rising edge of TCK. Returns the state that it leads to.
  TapState Rise(bool tms);

  TapState state() const {
    return state_;
  }

  // In Shift-IR or Shift-DR: this rising edge will shift a bit.
  bool shifting() const {
    return state_ == TapState::kShiftIr || state_ == TapState::kShiftDr;
  }

  // Number of the scan under way or of the last one, from 1; 0 before the first.
  uint64_t scan() const {
    return scan_;
  }

  // The register of that scan.
  Register scan_register() const {
    return register_;
  }

  // Bits of that scan that were shifted so far: the number of the bit, from 0, that is on TDO while
  // shifting.
  uint64_t bits() const {
    return bits_;
  }

 private:
  TapState state_ = TapState::kTestLogicReset;
  Register register_ = Register::kIr;
  uint64_t scan_ = 0;
  uint64_t bits_ = 0;
};

}  // namespace tool
