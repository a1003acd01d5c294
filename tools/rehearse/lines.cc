// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/lines.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

namespace tool {
namespace {

// 0 for times that are not whole, or longer than can be.
uint64_t WholeNanoseconds(double time) {
  constexpr double kTooLong = 1e15;
  return time < kTooLong && std::floor(time) == time ? static_cast<uint64_t>(time) : 0;
}

}  // namespace

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
    : clock_(clock),
      call_time_(call_time),
      whole_call_time_(WholeNanoseconds(call_time)),
      playhead_(playhead) {}

void Lines::Connect(Target &target) {
  target_ = &target;
  echo_ = dynamic_cast<EchoTarget *>(&target);
  chain_ = dynamic_cast<ChainTarget *>(&target);
  keeps_bits_ = echo_ == nullptr || !scan_watchers_.empty();
  SetPlain();
}

void Lines::WatchChanges(std::function<void(const LineChange &change)> watcher) {
  change_watchers_.push_back(std::move(watcher));
  watches_changes_ = true;
  SetPlain();
}

void Lines::WatchScans(std::function<void(const LineScan &scan)> watcher) {
  scan_watchers_.push_back(std::move(watcher));
  keeps_bits_ = true;
  SetPlain();
}

void Lines::SetPlain() {
  const bool direct = echo_ != nullptr || chain_ != nullptr;
  plain_ = direct && whole_call_time_ != 0 && !watches_changes_ && scan_watchers_.empty();
}

BitRow Lines::ScanTdo() const {
  if (keeps_bits_ || !captured_) {
    return scan_.tdo;
  }
  BitRow tdo;
  while (tdo.size() < tap_.bits()) {
    tdo.Push(echo_->Answer(tdo.size()));
  }
  return tdo;
}

void Lines::WorkBrokenTime() {
  clock_.Work(call_time_);
}

void Lines::WriteWatched(Line line, bool level) {
  const uint64_t time = clock_.now();
  Work();
  bool &now = levels_[static_cast<int>(line)];
  if (now == level) {
    return;
  }
  now = level;
  const bool entered = Change(line, level);
  if (watches_changes_) {
    Tell(line, time, entered);
    RefreshTdo(time);
  }
}

void Lines::ClockChain() {
  if (tap_.shifting()) {
    scan_.tdo.Push(chain_->Tdo());
  }
  chain_->Write(Line::kTck, true);
}

bool Lines::Change(Line line, bool level) {
  const bool rises = line == Line::kTck && level;
  if (rises && tap_.shifting() && keeps_bits_) {
    KeepBit();
  }
  WriteTarget(line, level);
  return rises && Rise();
}

bool Lines::Rise() {
  const svf::TapState found = tap_.state();
  ++counts_.clocks[static_cast<int>(found)];
  if (tap_.Rise(level(Line::kTms)) == found) {
    return false;
  }
  FollowScan(found);
  return true;
}

// The bit that is on TDI and TDO at the edge.
void Lines::KeepBit() {
  if (!scan_watchers_.empty()) {
    scan_.tdi.Push(level(Line::kTdi));
  }
  scan_.tdo.Push(Tdo());
}

void Lines::FollowScan(svf::TapState left) {
  const svf::TapState state = tap_.state();
  if (left == svf::TapState::kIdle) {
    BeginScan();
  } else if (svf::IsCapture(state)) {
    scan_.which = state == svf::TapState::kIrCapture ? ScanKind::kIr : ScanKind::kDr;
    scan_.open = true;
    captured_ = true;
    scan_.tdi.Clear();
    scan_.tdo.Clear();
  } else if (svf::IsUpdate(state)) {
    EndScan();
  }
}

void Lines::BeginScan() {
  scan_.tdi.Clear();
  scan_.tdo.Clear();
  captured_ = false;
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
  const bool level = Tdo();
  if (now != level) {
    now = level;
    Tell(Line::kTdo, time, false);
  }
}

}  // namespace tool
