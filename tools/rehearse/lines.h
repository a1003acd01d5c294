// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The four lines between the driver and a target, the time on the board, and the watchers of the
// lines.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "svf/tap.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/scan.h"
#include "tools/rehearse/target.h"
#include "tools/rehearse/target_chain.h"

namespace tool {

// The time on the board, in nanoseconds since the rehearsal began. It is simulated: nothing waits
// for it. The clock shows whole nanoseconds and carries the fraction of processor time.
class BoardClock {
 public:
  uint64_t now() const {
    return now_;
  }

  // Adds processor time: a call of a pin callback.
  void Work(double nanoseconds) {
    rest_ += nanoseconds;
    const auto whole = static_cast<uint64_t>(rest_);
    now_ += whole;
    rest_ -= static_cast<double>(whole);
  }

  void Work(uint64_t nanoseconds) {
    now_ += nanoseconds;
  }

  // Adds a busy-wait.
  void Wait(uint64_t nanoseconds) {
    now_ += nanoseconds;
    waited_ += nanoseconds;
    ++waits_;
  }

  // The total of all waits, and their number.
  uint64_t waited() const {
    return waited_;
  }
  uint64_t waits() const {
    return waits_;
  }

 private:
  uint64_t now_ = 0;
  uint64_t waited_ = 0;
  uint64_t waits_ = 0;
  double rest_ = 0;  // less than one nanosecond
};

// Counts of the events on the lines.
struct LineCounts {
  uint64_t writes[3] = {};                // driver calls by line, repeated levels included
  uint64_t reads[2] = {};                 // driver reads by the level read
  uint64_t clocks[svf::kTapStates] = {};  // rising edges by the state before the edge

  uint64_t calls() const {
    return writes[0] + writes[1] + writes[2] + all_reads();
  }
  uint64_t all_reads() const {
    return reads[0] + reads[1];
  }
  uint64_t clocks_in(svf::TapState state) const {
    return clocks[static_cast<int>(state)];
  }
  uint64_t all_clocks() const;

  LineCounts &operator+=(const LineCounts &more);
};

// A level change of a line, TDO included, and its effect.
struct LineChange {
  Line line;
  bool level;
  uint64_t time;        // on the board, in nanoseconds
  svf::TapState state;  // after the change
  bool entered;         // true if the change, a rising edge of TCK, changed the TAP's state
};

class Lines {
 public:
  // Every call of the driver takes `call_time` nanoseconds on `clock`. Initially TCK is low, TMS
  // and TDI are high, and the TAP is in Test-Logic-Reset. `playhead` is notified of every scan;
  // null: no file is played. `clock` and `playhead` outlive the lines.
  Lines(BoardClock &clock, double call_time, Playhead *playhead = nullptr);

  // Sets the target, which outlives the lines. It is required before the first call. An echo or a
  // chain is called directly, others by their interface.
  void Connect(Target &target);

  // Notifies `watcher` from now on of every change, or of every scan when it is updated. The order
  // of watchers does not matter: none sees anything that depends on another.
  void WatchChanges(std::function<void(const LineChange &change)> watcher);
  void WatchScans(std::function<void(const LineScan &scan)> watcher);

  // The driver's calls. Nearly all are levels and clocks in a state that lasts: where nobody
  // watches, they are done here.
  void Write(Line line, bool level) {
    ++counts_.writes[static_cast<int>(line)];
    if (!plain_) [[unlikely]] {
      return WriteWatched(line, level);
    }
    clock_.Work(whole_call_time_);
    bool &now = levels_[static_cast<int>(line)];
    if (now == level) {
      return;
    }
    now = level;
    if (line == Line::kTck && level) {
      RisePlain();
    } else if (echo_ != nullptr) {
      echo_->ChangeLevel(line, level);
    } else {
      chain_->Write(line, level);
    }
  }
  bool Read() {
    Work();
    const bool level = Tdo();
    ++counts_.reads[level];
    return level;
  }

  svf::TapState state() const {
    return tap_.state();
  }

  // The scan that the TAP is in, or was in last; once it leaves Run-Test/Idle, the next one. Its
  // bits are there only while scans are watched; its TDO so far is always to be had.
  const LineScan &scan() const {
    return scan_;
  }
  BitRow ScanTdo() const;
  const LineCounts &counts() const {
    return counts_;
  }
  void StartCounting() {
    counts_ = {};
  }

  // The current level of a line; TDO's is valid only while changes are watched.
  bool level(Line line) const {
    return levels_[static_cast<int>(line)];
  }

 private:
  void Work() {
    if (whole_call_time_ != 0) [[likely]] {
      clock_.Work(whole_call_time_);
    } else {
      WorkBrokenTime();
    }
  }
  void WorkBrokenTime();

  bool Tdo() const {
    if (echo_ != nullptr) {
      return echo_->Tdo();
    }
    return chain_ != nullptr ? chain_->Tdo() : target_->Tdo();
  }
  void WriteTarget(Line line, bool level) {
    chain_ != nullptr ? chain_->Write(line, level) : target_->Write(line, level);
  }

  [[gnu::always_inline]] void RisePlain() {
    if (!tap_.lasts() || levels_[static_cast<int>(Line::kTms)]) {
      Change(Line::kTck, true);
      return;
    }
    ++counts_.clocks[static_cast<int>(tap_.state())];
    tap_.Stay();
    if (echo_ != nullptr) {
      echo_->Stay();
    } else {
      ClockChain();
    }
  }
  void ClockChain();
  void WriteWatched(Line line, bool level);

  // Both return whether the TAP's state changed.
  bool Change(Line line, bool level);
  bool Rise();

  void KeepBit();
  void SetPlain();
  void FollowScan(svf::TapState left);
  void BeginScan();
  void EndScan();
  void Tell(Line line, uint64_t time, bool entered);
  void RefreshTdo(uint64_t time);

  BoardClock &clock_;
  double call_time_;
  uint64_t whole_call_time_;  // the same if it is whole; else 0
  Playhead *playhead_;
  Target *target_ = nullptr;
  EchoTarget *echo_ = nullptr;  // the target, if it is one of these
  ChainTarget *chain_ = nullptr;
  Tap tap_;
  LineScan scan_;
  LineCounts counts_;
  bool levels_[4] = {false, true, true, true};
  bool captured_ = false;  // the scan has been through its Capture
  bool watches_changes_ = false;
  bool keeps_bits_ = false;  // of the scan; an echo's TDO is known without
  bool plain_ = false;       // the target is an echo or a chain, and nobody watches
  std::vector<std::function<void(const LineChange &)>> change_watchers_;
  std::vector<std::function<void(const LineScan &)>> scan_watchers_;
};

}  // namespace tool
