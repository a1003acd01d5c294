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
  instruction = cells.Number();
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

sim_u32 Device::ResetInstruction() const {
  const sim_u32 bypass = 0xffffffffu >> (32 - config.ir_bits);
  return config.idcode != 0 ? config.idcode_instruction : bypass;
}

// ---- the programmable part

void Part::Create() {
  dead_row = config->rows;
  __builtin_memset(memory, config->blank ? 0xff : 0, config->rows * RowBytes());
  PowerCycle(0);
}

void Part::PowerCycle(sim_u64 now) {
  Settle(now);
  operation = kNone;
  address = 0;
  enabled = false;
  done = false;
  failed = false;
}

void Part::LosePower(sim_u64 now, sim_u64 seed) {
  Settle(now);
  if (operation == kErase) {
    for (sim_u32 row = 0; row < config->rows; ++row) {
      Garble(row, seed);
    }
  } else if (operation == kProgram && latched_row < config->rows) {
    Garble(latched_row, seed);
  }
  PowerCycle(now);
}

void Part::Garble(sim_u32 row, sim_u64 seed) {
  // A linear congruential generator: its high bits look like noise, and are the same each time.
  sim_u64 noise = seed + row;
  for (sim_u64 bit = 0; bit < config->row_bits; ++bit) {
    noise = noise * 6364136223846793005u + 1442695040888963407u;
    PutBit(RowMemory(row), bit, noise >> 63 != 0);
  }
}

void Part::Reset(sim_u64 now) {
  Abandon(now);
  enabled = false;
}

bool Part::Knows(sim_u32 instruction) {
  switch (instruction) {
    case SIM_ENABLE:
    case SIM_DISABLE:
    case SIM_ERASE:
    case SIM_ADDRESS:
    case SIM_PROGRAM:
    case SIM_READ:
    case SIM_STATUS:
      return true;
    default:
      return false;
  }
}

sim_u64 Part::RegisterBits(sim_u32 instruction) const {
  switch (instruction) {
    case SIM_ADDRESS:
      return 32;
    case SIM_PROGRAM:
    case SIM_READ:
      return config->row_bits;
    case SIM_STATUS:
      return 8;
    default:
      return 1;
  }
}

void Part::Load(sim_u32 instruction, sim_u64 now) {
  if (instruction == SIM_STATUS) {
    return;
  }
  Abandon(now);
  if (instruction == SIM_ENABLE) {
    Enable();
  } else if (instruction == SIM_DISABLE) {
    enabled = false;
  } else if (instruction == SIM_ERASE && enabled) {
    Begin(kErase, config->erase_clocks, now);
  }
}

void Part::Capture(sim_u32 instruction, const Cells &cells, sim_u64 now) {
  if (instruction == SIM_STATUS) {
    cells.SetNumber(Status(now));
  } else if (instruction == SIM_ADDRESS && enabled) {
    cells.SetNumber(address);
  } else if (instruction == SIM_READ && enabled) {
    CaptureRow(cells);
  } else {
    cells.SetNumber(0);
  }
}

void Part::Update(sim_u32 instruction, const Cells &cells, sim_u64 now) {
  if (!enabled) {
    return;
  }
  if (instruction == SIM_ADDRESS) {
    address = cells.Number();
  } else if (instruction == SIM_READ) {
    ++address;
  } else if (instruction == SIM_PROGRAM) {
    Abandon(now);
    LatchRow(cells);
    Begin(kProgram, config->program_clocks, now);
  }
}

sim_u8 Part::Status(sim_u64 now) {
  Settle(now);
  unsigned status = enabled ? SIM_STATUS_ENABLED : 0;
  status |= operation != kNone ? SIM_STATUS_BUSY : 0;
  status |= done ? SIM_STATUS_DONE : 0;
  status |= failed ? SIM_STATUS_FAILED : 0;
  return static_cast<sim_u8>(status);
}

sim_u8 *Part::Row(sim_u32 row, sim_u64 now) {
  Settle(now);
  return row < config->rows ? RowMemory(row) : nullptr;
}

void Part::Settle(sim_u64 now) {
  if (operation != kNone && now >= due) {
    Finish();
  }
}

void Part::Abandon(sim_u64 now) {
  Settle(now);
  if (operation != kNone) {
    operation = kNone;
    failed = true;
  }
}

void Part::Begin(Operation what, sim_u32 clocks, sim_u64 now) {
  operation = what;
  due = now + clocks;
  done = false;
}

void Part::Finish() {
  if (operation == kErase) {
    __builtin_memset(memory, 0xff, config->rows * RowBytes());
  } else {
    ProgramLatchedRow();
  }
  operation = kNone;
  done = true;
}

void Part::ProgramLatchedRow() {
  if (latched_row >= config->rows) {
    failed = true;
    return;
  }
  if (latched_row == dead_row) {
    return;
  }
  sim_u8 *row = RowMemory(latched_row);
  for (sim_u64 i = 0; i < RowBytes(); ++i) {
    failed |= (latch[i] & ~row[i]) != 0;
    row[i] &= static_cast<sim_u8>(latch[i] | UnusedBits(i));
  }
}

// Those of a byte of a row that are past its bits. The latch has zeros there.
unsigned Part::UnusedBits(sim_u64 byte) const {
  const sim_u64 bits = config->row_bits - 8 * byte;
  return bits < 8 ? 0xffu << bits & 0xffu : 0;
}

void Part::Enable() {
  if (enabled) {
    return;
  }
  enabled = true;
  address = 0;
  done = false;
  failed = false;
}

void Part::LatchRow(const Cells &cells) {
  cells.CopyTo(latch);
  latched_row = address++;
}

void Part::CaptureRow(const Cells &cells) const {
  if (address < config->rows) {
    cells.CopyFrom(RowMemory(address));
  } else {
    cells.Fill([](sim_u64, unsigned bits) { return Ones(bits); });
  }
}

}  // namespace sim
