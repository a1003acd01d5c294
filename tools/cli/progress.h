// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A line that tells how far a long job is: percent, rate, time left.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace tool {

// One job, of `total` steps. The line is on standard error, only if that is a terminal, and only
// after the first second; it is gone when the object is. At most one exists at a time.
class Progress {
 public:
  // `label` says what is done ("compile"), `unit` what a step is; rates are in millions of units a
  // second ("MB") or, with `unit` not "B", in units.
  Progress(std::string label, uint64_t total, std::string unit = "B");
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // So many steps are done. Cheap enough to be called for every record. A job may find that its
  // total was wrong; more than the total shows as 100 %.
  void Update(uint64_t done) {
    if (shown_at_all_ && done >= next_look_) {
      Look(done);
    }
  }

  // Says from now on that something else is done.
  void Relabel(std::string label) {
    label_ = std::move(label);
  }

  // Takes the line off the terminal until the next update is due.
  void Hide();

 private:
  using Clock = std::chrono::steady_clock;

  void Look(uint64_t done);
  std::string Line(uint64_t done, double seconds) const;

  std::string label_;
  std::string unit_;
  uint64_t total_;
  bool shown_at_all_;
  bool visible_ = false;
  uint64_t next_look_ = 0;
  uint64_t look_every_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_show_ = start_ + std::chrono::seconds(1);
};

// Hides the progress line there is, so that something else can be printed.
void HideProgress();

}  // namespace tool
