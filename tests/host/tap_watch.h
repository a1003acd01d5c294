// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a TAP controller at the end of the pins sees, as text. It follows the state table of
// IEEE 1149.1 on rising TCK edges, and answers reads with the TDO bits that the test queued.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "shim.h"

class TapWatch {
 public:
  // Takes over the pins' callbacks. The controller starts in Run-Test/Idle.
  explicit TapWatch(shim::Pins &pins) {
    pins.OnWrite([this](shim::Line line, bool level) { Write(line, level); });
    pins.OnRead([this] { return Read(); });
  }

  // The TDO bits of the next scans, first bit out first, one string a scan; further bits and
  // further scans read 0.
  void QueueTdo(std::string bits) {
    tdo_.push_back(std::move(bits));
  }

  // Everything seen so far: "reset", "idle N" (N clocks spent in Run-Test/Idle), "IR bits" and
  // "DR bits" (the TDI bits sampled in the shift state, first bit first), separated by ", ".
  std::string Text() const {
    std::string text;
    for (const std::string &item : seen_) {
      text += (text.empty() ? "" : ", ") + item;
    }
    if (idle_ != 0) {
      text += (text.empty() ? "" : ", ") + IdleText();
    }
    return text;
  }

  // Forgets what was seen, not the state.
  void Clear() {
    seen_.clear();
    idle_ = 0;
  }

 private:
  enum State : uint8_t {
    kReset,
    kIdle,
    kSelectDr,
    kCaptureDr,
    kShiftDr,
    kExit1Dr,
    kPauseDr,
    kExit2Dr,
    kUpdateDr,
    kSelectIr,
    kCaptureIr,
    kShiftIr,
    kExit1Ir,
    kPauseIr,
    kExit2Ir,
    kUpdateIr,
  };

  static State Next(State state, bool tms) {
    // [state][TMS]
    static constexpr std::array<std::array<State, 2>, 16> kTable = {{
        {kIdle, kReset},
        {kIdle, kSelectDr},
        {kCaptureDr, kSelectIr},
        {kShiftDr, kExit1Dr},
        {kShiftDr, kExit1Dr},
        {kPauseDr, kUpdateDr},
        {kPauseDr, kExit2Dr},
        {kShiftDr, kUpdateDr},
        {kIdle, kSelectDr},
        {kCaptureIr, kReset},
        {kShiftIr, kExit1Ir},
        {kShiftIr, kExit1Ir},
        {kPauseIr, kUpdateIr},
        {kPauseIr, kExit2Ir},
        {kShiftIr, kUpdateIr},
        {kIdle, kSelectDr},
    }};
    return kTable[state][tms];
  }

  std::string IdleText() const {
    return "idle " + std::to_string(idle_);
  }

  void Write(shim::Line line, bool level) {
    if (line == shim::kTms) {
      tms_ = level;
    } else if (line == shim::kTdi) {
      tdi_ = level;
    } else if (line == shim::kTck) {
      if (level && !tck_) {
        Rise();
      }
      tck_ = level;
    }
  }

  void Rise() {
    if (state_ == kShiftDr || state_ == kShiftIr) {
      bits_ += tdi_ ? '1' : '0';
    }
    const State next = Next(state_, tms_);
    if (state_ == kIdle && next == kIdle) {
      ++idle_;
    } else if (next == kReset && state_ != kReset) {
      Add("reset");
    } else if (next == kCaptureDr || next == kCaptureIr) {
      bits_.clear();
    } else if (next == kUpdateDr || next == kUpdateIr) {
      Add((next == kUpdateDr ? "DR " : "IR ") + bits_);
      if (!tdo_.empty()) {
        tdo_.pop_front();
      }
    }
    state_ = next;
  }

  void Add(std::string item) {
    if (idle_ != 0) {
      seen_.push_back(IdleText());
      idle_ = 0;
    }
    seen_.push_back(std::move(item));
  }

  int Read() const {
    const size_t bit = bits_.size();
    return !tdo_.empty() && bit < tdo_.front().size() && tdo_.front()[bit] == '1' ? 1 : 0;
  }

  State state_ = kIdle;
  bool tms_ = false, tdi_ = false, tck_ = true;
  uint64_t idle_ = 0;
  std::string bits_;
  std::vector<std::string> seen_;
  std::deque<std::string> tdo_;
};
