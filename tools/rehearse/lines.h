// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The four lines between the driver and a target, with whoever watches them.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/rehearse/board_clock.h"
#include "tools/rehearse/tap_observer.h"
#include "tools/rehearse/target.h"

namespace tool {

// Sees every change of level, TDO's included. Times are the board's, in nanoseconds.
class EdgeWatcher {
 public:
  virtual ~EdgeWatcher() = default;
  virtual void Changed(Line line, bool level, uint64_t time) = 0;

  // The TAP has come to another state, at the rising edge that was told just before.
  virtual void Entered(TapState state, uint64_t time) = 0;
};

// Sees the scans.
class ScanWatcher {
 public:
  virtual ~ScanWatcher() = default;

  // The TAP has come to another state: TapObserver tells the scan's number and register.
  virtual void Entered(TapState state) = 0;

  // A bit is shifted, in Shift-IR or Shift-DR, at this rising edge.
  virtual void Shifted(bool tdi, bool tdo) = 0;

  // The driver reads TDO.
  virtual void Read(bool tdo) = 0;
};

// What happened on the lines.
struct LineCounts {
  uint64_t writes[3] = {};  // calls of the driver by line, equal levels included
  uint64_t reads = 0;
  uint64_t clocks[kTapStates] = {};  // rising edges by the state that they found
};

class Lines {
 public:
  // Every call of the driver takes `call_time` nanoseconds on `clock`. At first TCK is low, TMS and
  // TDI are high, and the TAP is in Test-Logic-Reset. The clock outlives the lines.
  Lines(BoardClock &clock, double call_time);

  // The target; it outlives the lines. There must be one before the first call.
  void Connect(Target &target);

  // Watchers are called in the order in which they came; they outlive the lines or are dropped.
  void Watch(EdgeWatcher &watcher);
  void Watch(ScanWatcher &watcher);
  void DropWatchers();

  // The driver's calls.
  void Write(Line line, bool level);
  bool Read();

  const TapObserver &tap() const {
    return tap_;
  }
  const LineCounts &counts() const {
    return counts_;
  }

  // Level that a line has now.
  bool level(Line line) const {
    return levels_[static_cast<int>(line)];
  }

 private:
  void Rise(uint64_t time);
  void RefreshTdo(uint64_t time);

  BoardClock &clock_;
  double call_time_;
  Target *target_ = nullptr;
  TapObserver tap_;
  LineCounts counts_;
  bool levels_[4] = {false, true, true, true};
  std::vector<EdgeWatcher *> edge_watchers_;
  std::vector<ScanWatcher *> scan_watchers_;
};

}  // namespace tool
