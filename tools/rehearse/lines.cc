// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/lines.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

namespace tool {

uint64_t LineCounts::all_clocks() const {
  return std::accumulate(std::begin(clocks), std::end(clocks), uint64_t{0});
}

LineCounts &LineCounts::operator+=(const LineCounts &more) {
  const auto add = [](auto &sums, const auto &numbers) {
    std::transform(std::begin(sums), std::end(sums), std::begin(numbers), std::begin(sums),
                   std::plus<>());
  };
  add(writes, more.writes);
  add(reads, more.reads);
  add(clocks, more.clocks);
  return *this;
}

Lines::Lines(BoardClock &clock, double call_time, Playhead *playhead)
    : clock_(clock), call_time_(call_time), playhead_(playhead) {}

void Lines::Connect(Target &target) {
  target_ = &target;
}

void Lines::WatchChanges(std::function<void(const LineChange &change)> watcher) {
  change_watchers_.push_back(std::move(watcher));
}

void Lines::WatchScans(std::function<void(const LineScan &scan)> watcher) {
  scan_watchers_.push_back(std::move(watcher));
}

void Lines::Write(Line line, bool level) {
  ++counts_.writes[static_cast<int>(line)];
  const uint64_t time = clock_.now();
  clock_.Work(call_time_);
  bool &now = levels_[static_cast<int>(line)];
  if (now == level) {
    return;
  }
  now = level;
  bool entered = false;
  if (line == Line::kTck && level) {
    entered = Rise();
  } else {
    target_->Write(line, level);
  }
  if (!change_watchers_.empty()) {
    Tell(line, time, entered);
    RefreshTdo(time);
  }
}

bool Lines::Read() {
  clock_.Work(call_time_);
  const bool level = target_->Tdo();
  ++counts_.reads[level];
  return level;
}

// Shifts the bit that is on TDI and TDO at the edge. Returns whether the TAP's state changed.
bool Lines::Rise() {
  const svf::TapState found = tap_.state();
  ++counts_.clocks[static_cast<int>(found)];
  if (tap_.shifting()) {
    scan_.tdi.Push(level(Line::kTdi));
    scan_.tdo.Push(target_->Tdo());
  }
  target_->Write(Line::kTck, true);
  if (tap_.Rise(level(Line::kTms)) == found) {
    return false;
  }
  FollowScan(found);
  return true;
}

void Lines::FollowScan(svf::TapState left) {
  const svf::TapState state = tap_.state();
  if (left == svf::TapState::kIdle) {
    BeginScan();
  } else if (svf::IsCapture(state)) {
    scan_.which = state == svf::TapState::kIrCapture ? ScanKind::kIr : ScanKind::kDr;
    scan_.open = true;
    scan_.tdi.Clear();
    scan_.tdo.Clear();
  } else if (svf::IsUpdate(state)) {
    EndScan();
  }
}

void Lines::BeginScan() {
  scan_.tdi.Clear();
  scan_.tdo.Clear();
  scan_.of_file = playhead_ == nullptr ? nullptr : playhead_->BeginScan();
}

void Lines::EndScan() {
  scan_.open = false;
  for (const auto &watcher : scan_watchers_) {
    watcher(scan_);
  }
}

void Lines::Tell(Line line, uint64_t time, bool entered) {
  const LineChange change = {line, level(line), time, tap_.state(), entered};
  for (const auto &watcher : change_watchers_) {
    watcher(change);
  }
}

void Lines::RefreshTdo(uint64_t time) {
  bool &now = levels_[static_cast<int>(Line::kTdo)];
  const bool level = target_->Tdo();
  if (now != level) {
    now = level;
    Tell(Line::kTdo, time, false);
  }
}

}  // namespace tool
