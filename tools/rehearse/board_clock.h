// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The time that passes on the board in a rehearsal. Nothing waits for it.
#pragma once

#include <cstdint>

namespace tool {

// Nanoseconds since the rehearsal began. The clock shows whole ones; of work it keeps the rest.
class BoardClock {
 public:
  uint64_t now() const {
    return now_;
  }

  // Time that the processor works: a call of a pin callback.
  void Work(double nanoseconds) {
    rest_ += nanoseconds;
    const auto whole = static_cast<uint64_t>(rest_);
    now_ += whole;
    rest_ -= static_cast<double>(whole);
  }

  // Time that it waits busily.
  void Wait(uint64_t nanoseconds) {
    now_ += nanoseconds;
    waited_ += nanoseconds;
    ++waits_;
  }

  // The sum of all waits, and how many there were.
  uint64_t waited() const {
    return waited_;
  }
  uint64_t waits() const {
    return waits_;
  }

 private:
  uint64_t now_ = 0;
  double rest_ = 0;  // less than a nanosecond
  uint64_t waited_ = 0;
  uint64_t waits_ = 0;
};

}  // namespace tool
