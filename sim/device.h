// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One device of the chain: its instruction, and the data register that the instruction selects.
#ifndef SIM_DEVICE_H
#define SIM_DEVICE_H

#include "part.h"

namespace sim {

constexpr sim_u64 kInstructionBits = 8;

struct Device {
  sim_device_config config;
  Part part;    // part.config is &config
  Cells cells;  // this device's stretch of the shift register since the last Capture; none: skipped
  sim_u8 instruction;
  bool missing;  // a fault: the place is bridged

  // The length of the longest register, for the shift register's memory.
  static sim_u64 LongestRegister(const sim_device_config &config);

  // Power off and on; and Test-Logic-Reset. `now` here and below: see Part.
  void PowerCycle(sim_u64 now);
  void Reset(sim_u64 now);

  // The data register in force, in bits.
  sim_u64 RegisterBits() const;

  // The TAP's states of these names, on `cells`.
  void CaptureIr(sim_u64 now);
  void UpdateIr(sim_u64 now);
  void CaptureDr(sim_u64 now);
  void UpdateDr(sim_u64 now);

 private:
  bool IdcodeSelected() const {
    return config.idcode != 0 && instruction == config.idcode_instruction;
  }
  bool PartSelected() const {
    return part.exists() && Part::Knows(instruction);
  }
  sim_u8 ResetInstruction() const;
};

}  // namespace sim

#endif
