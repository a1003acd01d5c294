// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One device of the chain: its instruction, the data register that the instruction selects, and its
// programmable part. The instructions' meaning stands in sim.h.
#ifndef SIM_DEVICE_H
#define SIM_DEVICE_H

#include "shift_register.h"

namespace sim {

// The programmable part: configuration memory and what its instructions do. Times are counts of the
// chain's Run-Test/Idle clocks so far (`now`): an operation under way is settled when somebody
// looks, so idle clocks cost nothing per device.
struct Part {
  enum Operation : sim_u8 { kNone, kErase, kProgram };

  const sim_device_config *config;
  sim_u8 *memory;  // rows after one another, RowBytes() each
  sim_u8 *latch;   // the row being programmed, RowBytes()
  sim_u64 due;     // when the operation under way takes effect
  sim_u32 address;
  sim_u32 latched_row;
  sim_u32 dead_row;  // a fault; config->rows: none
  Operation operation;
  bool enabled;
  bool done;
  bool failed;

  sim_u64 RowBytes() const {
    return BytesFor(config->row_bits);
  }

  // Whether there is a part at all; the functions below are for one that exists.
  bool exists() const {
    return config->rows != 0;
  }

  // The memory as the configuration says, and all else as at power-up.
  void Create();

  // Power off and on: an operation that has had its clocks has taken effect, another one is lost.
  void PowerCycle(sim_u64 now);

  // The power goes: what was being programmed or erased is garbage, which depends on `seed`.
  void LosePower(sim_u64 now, sim_u64 seed);

  // Test-Logic-Reset: programming mode ends.
  void Reset(sim_u64 now);

  // Whether the part knows an instruction, and the length of its register in bits.
  static bool Knows(sim_u32 instruction);
  sim_u64 RegisterBits(sim_u32 instruction) const;

  // Update-IR, Capture-DR and Update-DR with an instruction that the part knows.
  void Load(sim_u32 instruction, sim_u64 now);
  void Capture(sim_u32 instruction, const Cells &cells, sim_u64 now);
  void Update(sim_u32 instruction, const Cells &cells, sim_u64 now);

  // Lets the operation under way take effect if it has had its clocks by `now`. The other functions
  // do so themselves; a caller needs it before it changes what the operation would find.
  void Settle(sim_u64 now);

  // The status register, and a row's memory (null past the last), both as of `now`.
  sim_u8 Status(sim_u64 now);
  sim_u8 *Row(sim_u32 row, sim_u64 now);

 private:
  void Abandon(sim_u64 now);
  void Begin(Operation what, sim_u32 clocks, sim_u64 now);
  void Finish();
  void ProgramLatchedRow();
  unsigned UnusedBits(sim_u64 byte) const;
  void Garble(sim_u32 row, sim_u64 seed);
  void Enable();
  void LatchRow(const Cells &cells);
  void CaptureRow(const Cells &cells) const;
  sim_u8 *RowMemory(sim_u32 row) const {
    return memory + row * RowBytes();
  }
};

struct Device {
  sim_device_config config;
  Part part;    // part.config is &config
  Cells cells;  // this device's stretch of the shift register since the last Capture; none: skipped
  sim_u32 instruction;
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
    return part.exists() && !IdcodeSelected() && instruction != config.bypass_code &&
           Part::Knows(instruction);
  }
  sim_u32 ResetInstruction() const;
};

}  // namespace sim

#endif
