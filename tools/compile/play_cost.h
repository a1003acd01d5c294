// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What playing a file will cost, told from its records alone.
#pragma once

#include <cstdint>

namespace tool {

// Adds up what the player does for scans and run-tests, its reset and its query of the IDCODE
// before the file left out. Times are in nanoseconds.
class PlayCost {
 public:
  // `pin_ns`: what one call of a pin callback takes.
  explicit PlayCost(double pin_ns) : pin_ns_(pin_ns) {}

  // A scan (opcode kSir or kSdr) without header and trailer, of which `compared` bits are compared,
  // while the clock is at `hz`. The player does not hold scans to that frequency; `hz` only counts
  // for time_at_frequency().
  void AddScan(uint8_t opcode, uint64_t bits, uint64_t compared, uint32_t hz);

  // A run-test of so many clocks at `hz`, which the player does wait for.
  void AddRunTest(uint64_t clocks, uint32_t hz);

  uint64_t clocks() const {
    return clocks_;
  }
  uint64_t run_test_clocks() const {
    return run_test_clocks_;
  }
  uint64_t pin_calls() const {
    return pin_calls_;
  }

  // If every clock took its period at the frequency in force.
  double time_at_frequency() const {
    return time_at_frequency_;
  }

  // If nothing took time but pin calls and the waits of run-tests.
  double time_of_pins() const {
    return time_of_pins_;
  }

 private:
  void AddCalls(uint64_t calls);
  void AddClocks(uint64_t clocks, uint32_t hz);

  double pin_ns_;
  uint64_t clocks_ = 0;
  uint64_t run_test_clocks_ = 0;
  uint64_t pin_calls_ = 0;
  double time_at_frequency_ = 0;
  double time_of_pins_ = 0;
};

}  // namespace tool
