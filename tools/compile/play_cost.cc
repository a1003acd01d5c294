// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/play_cost.h"

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

constexpr uint64_t kWalkToShiftIr = 4;
constexpr uint64_t kWalkToShiftDr = 3;
constexpr uint64_t kWalkBack = 2;

// The player waits in whole units.
constexpr double kWaitUnit = 100e3;

}  // namespace

uint64_t PlayCost::ScanClocks(bool instruction, uint64_t bits) {
  return (instruction ? kWalkToShiftIr : kWalkToShiftDr) + bits + kWalkBack;
}

// TCK is written twice a clock, TDI once a bit. TMS is written on the way to the Shift state and
// back, at the first bit and at the last.
void PlayCost::AddScan(bool instruction, uint64_t bits, uint64_t compared, uint32_t hz) {
  const uint64_t clocks = ScanClocks(instruction, bits);
  AddClocks(clocks, hz);
  AddCalls(2 * clocks + bits + (clocks - bits) + std::min<uint64_t>(bits, 2) + compared);
}

void PlayCost::AddRunTest(uint64_t clocks, uint32_t hz) {
  AddClocks(clocks, hz);
  run_test_clocks_ += clocks;
  AddCalls(2 + 2 * clocks);
  const double taken = 2.0 * static_cast<double>(clocks) * pin_ns_;
  const double required = std::floor(static_cast<double>(clocks) * 1e6 / hz + 1) * 1e3;
  if (taken < required) {
    time_of_pins_ += (std::floor((required - taken) / kWaitUnit) + 1) * kWaitUnit;
  }
}

void PlayCost::AddCalls(uint64_t calls) {
  pin_calls_ += calls;
  time_of_pins_ += static_cast<double>(calls) * pin_ns_;
}

void PlayCost::AddClocks(uint64_t clocks, uint32_t hz) {
  clocks_ += clocks;
  time_at_frequency_ += static_cast<double>(clocks) * 1e9 / hz;
}

}  // namespace tool
