// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Tracks the TAP through an SVF file and checks it against the player's abilities.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "svf/parser.h"
#include "svf/tap.h"
#include "tools/compile/source_notes.h"

namespace tool {

// The player resets the TAP once, before the file; after that every scan and every run-test begins
// and ends in Run-Test/Idle. So two kinds of pause have a form in a TVB file, both of a scan that
// pauses in its own register's pause: if it is left through UPDATE, it equals, but for one idle
// clock, a scan that ends in Run-Test/Idle; if the next scan resumes it, both are one scan.
// Functions throw svf::Error where there is no form. They tell notes of pauses and, with
// `pause_as_idle`, warnings; without it, they refuse other pauses and go on as if it were set. A
// reset after a scan begins another file: see reset().
class TapTracker {
 public:
  // With `pause_as_idle` every pause counts as Run-Test/Idle, with a warning whenever devices see a
  // difference. `notes` must live as long as the object.
  TapTracker(SourceNotes &notes, bool pause_as_idle)
      : notes_(notes), pause_as_idle_(pause_as_idle) {}

  // The offset of a reset that the file needs before anything else is played; none if the player's
  // own reset is enough. BeginFile() says that the player will make it, before a new file.
  const std::optional<size_t> &reset() const {
    return reset_;
  }
  void BeginFile() {
    reset_.reset();
    scanned_ = false;
  }

  // Begins a scan of the instruction register or the data register, stated at `offset`; ends it in
  // `end`. BeginScan() returns true if the scan resumes the last one: shifting goes on.
  bool BeginScan(bool instruction, size_t offset);
  void EndScan(bool instruction, svf::TapState end, size_t offset);

  // True in the pause in which the last scan ended.
  bool scan_pauses() const {
    return scan_pauses_;
  }

  // TRST ON, or what ends it.
  void HoldInReset(size_t offset);
  void EndReset();

  // Follows a STATE statement. Returns the clocks that its path spends in Run-Test/Idle, before it
  // goes through reset and after.
  struct IdleClocks {
    uint64_t before = 0;
    uint64_t after = 0;
  };
  IdleClocks Walk(const svf::StateStatement &statement, size_t offset);

  // Follows a RUNTEST, stated at `offset`, that runs in one state and ends in another.
  void RunTest(svf::TapState run, svf::TapState end, size_t offset);

  // The end of the file.
  void Finish();

 private:
  void MoveTo(svf::TapState state, size_t offset);
  void StepTo(svf::TapState state, size_t offset);
  void Enter(svf::TapState state, size_t offset);
  void LeaveScanPause();
  void Reset(size_t offset);
  void RefusePause(size_t offset, const std::string &what, const std::string &instead,
                   const std::string &change);

  SourceNotes &notes_;
  bool pause_as_idle_;
  bool scanned_ = false;  // until then a reset changes nothing
  svf::TapState at_ = svf::TapState::kIdle;
  bool led_ = false;                            // to at_, by a statement of the file
  size_t scan_ = 0;                             // the last scan's offset
  bool scan_pauses_ = false;                    // at_ is the pause in which that scan ended
  svf::TapState pause_ = svf::TapState::kIdle;  // the same, while a path leaves it
  bool captured_ = false;                       // a path went through CAPTURE and has not ended yet
  bool shifted_ = false;                        // or through SHIFT
  std::optional<size_t> reset_;                 // a reset not yet followed by anything played
  std::optional<size_t> trst_;                  // TRST is ON since then
  uint64_t pauses_ = 0;                         // left through UPDATE
};

}  // namespace tool
