// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "device.h"

namespace sim {

sim_u64 Device::LongestRegister(const sim_device_config &config) {
  constexpr sim_u64 kIdcodeOrAddressBits = 32;
  const sim_u64 row_bits = config.rows != 0 ? config.row_bits : 0;
  return row_bits > kIdcodeOrAddressBits ? row_bits : kIdcodeOrAddressBits;
}

void Device::PowerCycle(sim_u64 now) {
  instruction = ResetInstruction();
  if (part.exists()) {
    part.PowerCycle(now);
  }
}

void Device::Reset(sim_u64 now) {
  instruction = ResetInstruction();
  if (part.exists()) {
    part.Reset(now);
  }
}

sim_u64 Device::RegisterBits() const {
  if (IdcodeSelected()) {
    return 32;
  }
  return PartSelected() ? part.RegisterBits(instruction) : 1;
}

void Device::CaptureIr(sim_u64 now) {
  const unsigned status = part.exists() ? part.Status(now) : 0;
  unsigned value = 1;
  value |= status & SIM_STATUS_ENABLED ? 1u << 2 : 0;
  value |= status & SIM_STATUS_BUSY ? 1u << 3 : 0;
  value |= status & SIM_STATUS_FAILED ? 1u << 4 : 0;
  cells.SetNumber(value);
}

void Device::UpdateIr(sim_u64 now) {
  instruction = static_cast<sim_u8>(cells.Number());
  if (PartSelected()) {
    part.Load(instruction, now);
  }
}

void Device::CaptureDr(sim_u64 now) {
  if (IdcodeSelected()) {
    cells.SetNumber(config.idcode);
  } else if (PartSelected()) {
    part.Capture(instruction, cells, now);
  } else {
    cells.SetNumber(0);
  }
}

void Device::UpdateDr(sim_u64 now) {
  if (PartSelected()) {
    part.Update(instruction, cells, now);
  }
}

sim_u8 Device::ResetInstruction() const {
  const sim_u32 bypass = SIM_BYPASS;
  return static_cast<sim_u8>(config.idcode != 0 ? config.idcode_instruction : bypass);
}

}  // namespace sim
