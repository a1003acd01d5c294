// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/tap_tracker.h"

#include <fmt/format.h>

#include <utility>

#include "svf/text.h"

namespace tool {
namespace {

using svf::TapState;

TapState PauseOf(bool instruction) {
  return instruction ? TapState::kIrPause : TapState::kDrPause;
}

const char *ScanName(bool instruction) {
  return instruction ? "SIR" : "SDR";
}

}  // namespace

bool TapTracker::BeginScan(bool instruction, size_t offset) {
  if (trst_) {
    throw svf::Error(offset, fmt::format("TRST is ON, so this {} would not reach a register; write "
                                         "TRST OFF before it",
                                         ScanName(instruction)));
  }
  scanned_ = true;
  const bool resumes = at_ == PauseOf(instruction) && scan_pauses_;
  if (resumes) {
    scan_pauses_ = false;
  } else if (at_ == PauseOf(instruction)) {
    const char *scan = ScanName(instruction);
    RefusePause(
        offset,
        fmt::format("this {} resumes the scan that is paused in {}, which the player cannot", scan,
                    Name(at_)),
        fmt::format("write both as one {0}, or end the first in IDLE (END{1} IDLE)", scan,
                    instruction ? "IR" : "DR"),
        "the paused scan's register is updated before this one captures anew");
  } else {
    LeaveScanPause();
  }
  at_ = TapState::kIdle;
  scan_pauses_ = false;
  return resumes;
}

void TapTracker::EndScan(bool instruction, TapState end, size_t offset) {
  scan_ = offset;
  led_ = true;
  if (end == TapState::kReset) {
    Reset(offset);
  } else if (svf::IsPause(end) && end != PauseOf(instruction)) {
    RefusePause(offset,
                fmt::format("this {} ends in {}, the other register's pause", ScanName(instruction),
                            Name(end)),
                fmt::format("write END{} IDLE before it", instruction ? "IR" : "DR"),
                "the scan ends in Run-Test/Idle and the other register is not captured");
  } else {
    scan_pauses_ = svf::IsPause(end);
    pause_ = end;
  }
  at_ = end;
}

void TapTracker::HoldInReset(size_t offset) {
  trst_ = offset;
  led_ = true;
  if (std::exchange(scan_pauses_, false)) {
    notes_.Warning(scan_,
                   fmt::format("TRST resets the TAP while this scan is paused in {}, but the "
                               "player ends every scan in Run-Test/Idle: its register is "
                               "updated before the reset",
                               Name(at_)));
  }
  Enter(TapState::kReset, offset);
}

void TapTracker::EndReset() {
  trst_.reset();
}

TapTracker::IdleClocks TapTracker::Walk(const svf::StateStatement &statement, size_t offset) {
  IdleClocks clocks;
  const bool led = std::exchange(led_, true);
  if (statement.path.size() == 1) {
    MoveTo(statement.path.front().state, offset);
    return clocks;
  }
  bool first = true;
  captured_ = false;
  shifted_ = false;
  for (const auto &[state, step_offset] : statement.path) {
    // A path may begin with a state to reach by the shortest way, as a single state does. The TAP's
    // state before the file's first statement is unknown.
    if (first && svf::IsStable(state) && (!led || !svf::Leads(at_, state))) {
      MoveTo(state, step_offset);
    } else {
      (reset_ ? clocks.after : clocks.before) += at_ == TapState::kIdle && state == TapState::kIdle;
      StepTo(state, step_offset);
    }
    first = false;
  }
  return clocks;
}

void TapTracker::RunTest(TapState run, TapState end, size_t offset) {
  if (run == TapState::kReset) {
    throw svf::Error(offset,
                     "this RUNTEST runs in RESET, but the player clocks in Run-Test/Idle only; "
                     "write RUNTEST IDLE");
  }
  if (svf::IsPause(run)) {
    RefusePause(offset,
                fmt::format("this RUNTEST runs in {}, but the player clocks in Run-Test/Idle only",
                            Name(run)),
                "write RUNTEST IDLE if the device allows it",
                "the clocks are given in Run-Test/Idle, with every register updated");
  } else {
    LeaveScanPause();
  }
  scan_pauses_ = false;
  led_ = true;
  at_ = TapState::kIdle;
  if (end == TapState::kReset) {
    Reset(offset);
  } else if (svf::IsPause(end) && !svf::IsPause(run)) {
    RefusePause(
        offset,
        fmt::format("this RUNTEST ends in {}, but the player stays in Run-Test/Idle", Name(end)),
        "write ENDSTATE IDLE", "the TAP stays in Run-Test/Idle and captures nothing");
  }
  at_ = end;
}

void TapTracker::Finish() {
  if (scan_pauses_) {
    notes_.Warning(scan_, fmt::format("the file ends with this scan paused in {}, but the player "
                                      "ends every scan in Run-Test/Idle: its register is updated, "
                                      "as it would be by the reset of the next download",
                                      Name(at_)));
  }
  if (reset_) {
    notes_.Warning(*reset_,
                   "the player does not reset the TAP at the end of a file: it stays in "
                   "Run-Test/Idle with its last instruction, until the next download resets it");
  }
  if (pauses_ > 1) {
    notes_.Note(fmt::format("{} scans in all pause like that", pauses_));
  }
}

// Takes the shortest way, which passes UPDATE from a pause.
void TapTracker::MoveTo(TapState state, size_t offset) {
  if (svf::IsPause(state)) {
    RefusePause(offset,
                fmt::format("STATE {} has no form in a TVB file: between scans the player is in "
                            "Run-Test/Idle only",
                            Name(state)),
                "take it out, or write STATE IDLE",
                "the TAP stays in Run-Test/Idle: nothing is captured, and what was paused is "
                "updated");
    scan_pauses_ = false;
    at_ = state;
    return;
  }
  LeaveScanPause();
  Enter(state, offset);
}

// One TCK of an explicit path.
void TapTracker::StepTo(TapState state, size_t offset) {
  if (!svf::Leads(at_, state)) {
    throw svf::Error(offset, fmt::format("the TAP cannot go from {} to {} in one clock; write out "
                                         "the path, or its last state alone",
                                         Name(at_), Name(state)));
  }
  if (IsShift(state) && !shifted_) {
    RefusePause(offset, "a path through a SHIFT state shifts bits that nothing states",
                "write a scan (SIR or SDR)", "nothing is captured, shifted or updated");
  } else if (IsUpdate(state) && captured_ && !shifted_) {
    RefusePause(offset,
                "this path captures and updates a register without a scan, which the player cannot",
                "write a scan (SIR or SDR)", "nothing is captured or updated");
  }
  shifted_ |= IsShift(state);
  captured_ |= IsCapture(state);
  if (svf::IsPause(state)) {
    MoveTo(state, offset);
  } else if (IsUpdate(state)) {
    LeaveScanPause();
    at_ = state;
  } else if (state != at_) {
    Enter(state, offset);
  }
  captured_ &= !svf::IsStable(state);
  shifted_ &= !svf::IsStable(state);
}

void TapTracker::Enter(TapState state, size_t offset) {
  if (state == TapState::kReset) {
    Reset(offset);
  }
  at_ = state;
}

void TapTracker::LeaveScanPause() {
  if (scan_pauses_ && ++pauses_ == 1) {
    notes_.Note(scan_, fmt::format("this scan pauses in {} and goes on through UPDATE; it is "
                                   "compiled to end in Run-Test/Idle, where a device sees at most "
                                   "one idle clock more",
                                   Name(pause_)));
  }
  scan_pauses_ = false;
}

void TapTracker::Reset(size_t offset) {
  scan_pauses_ = false;
  if (reset_) {
    notes_.Note(offset,
                "this reset is left out, since nothing is scanned between the one before and "
                "it");
  } else if (!scanned_) {
    notes_.Note(offset,
                "this reset is left out, since the player itself resets the TAP before the "
                "file");
  } else {
    reset_ = offset;
  }
}

void TapTracker::RefusePause(size_t offset, const std::string &what, const std::string &instead,
                             const std::string &change) {
  if (!pause_as_idle_) {
    notes_.Refuse(offset,
                  fmt::format("{}; {}, or have Run-Test/Idle in its place with --pause-as-idle",
                              what, instead),
                  true);
    return;
  }
  notes_.Warning(offset, fmt::format("{}; taken as Run-Test/Idle: {}", what, change));
}

}  // namespace tool
