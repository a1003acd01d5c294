// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/play_cost.h"

#include "tvb/player.h"

namespace tool {

void PlayCost::AddScan(uint8_t opcode, uint64_t bits, uint64_t compared, uint32_t hz) {
  const uint64_t clocks = tvb::ScanClocks(opcode, bits);
  AddClocks(clocks, hz);
  AddCalls(tvb::ScanPinCalls(clocks, bits, compared));
}

void PlayCost::AddRunTest(uint64_t clocks, uint32_t hz) {
  AddClocks(clocks, hz);
  run_test_clocks_ += clocks;
  AddCalls(tvb::RunTestPinCalls(clocks));
  const double taken = 2.0 * static_cast<double>(clocks) * pin_ns_;
  time_of_pins_ += static_cast<double>(tvb::RunTestWait(clocks, hz, static_cast<uint64_t>(taken)));
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
