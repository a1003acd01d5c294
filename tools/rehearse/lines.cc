// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/lines.h"

namespace tool {

Lines::Lines(BoardClock &clock, double call_time) : clock_(clock), call_time_(call_time) {}

void Lines::Connect(Target &target) {
  target_ = &target;
}

void Lines::Watch(EdgeWatcher &watcher) {
  edge_watchers_.push_back(&watcher);
}

void Lines::Watch(ScanWatcher &watcher) {
  scan_watchers_.push_back(&watcher);
}

void Lines::DropWatchers() {
  edge_watchers_.clear();
  scan_watchers_.clear();
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
  for (EdgeWatcher *watcher : edge_watchers_) {
    watcher->Changed(line, level, time);
  }
  if (line == Line::kTck && level) {
    Rise(time);
  } else {
    target_->Write(line, level);
  }
  if (!edge_watchers_.empty()) {
    RefreshTdo(time);
  }
}

bool Lines::Read() {
  ++counts_.reads;
  clock_.Work(call_time_);
  const bool level = target_->Tdo();
  for (ScanWatcher *watcher : scan_watchers_) {
    watcher->Read(level);
  }
  return level;
}

// Whoever watches sees the bit before the target does, and the new state after it.
void Lines::Rise(uint64_t time) {
  const TapState found = tap_.state();
  ++counts_.clocks[static_cast<int>(found)];
  if (tap_.shifting() && !scan_watchers_.empty()) {
    const bool tdo = target_->Tdo();
    for (ScanWatcher *watcher : scan_watchers_) {
      watcher->Shifted(level(Line::kTdi), tdo);
    }
  }
  target_->Write(Line::kTck, true);
  const TapState state = tap_.Rise(level(Line::kTms));
  if (state == found) {
    return;
  }
  for (EdgeWatcher *watcher : edge_watchers_) {
    watcher->Entered(state, time);
  }
  for (ScanWatcher *watcher : scan_watchers_) {
    watcher->Entered(state);
  }
}

void Lines::RefreshTdo(uint64_t time) {
  bool &now = levels_[static_cast<int>(Line::kTdo)];
  const bool level = target_->Tdo();
  if (now != level) {
    now = level;
    for (EdgeWatcher *watcher : edge_watchers_) {
      watcher->Changed(Line::kTdo, level, time);
    }
  }
}

}  // namespace tool
