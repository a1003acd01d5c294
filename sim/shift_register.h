// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Bits in bytes, and the registers of all devices between TDI and TDO, end to end: one shift
// register, kept as a ring so that a clock costs the same for any length.
#ifndef SIM_SHIFT_REGISTER_H
#define SIM_SHIFT_REGISTER_H

#include "sim.h"

namespace sim {

// Packed bits: bit n is bit n mod 8 of byte n div 8, least significant first.

// Bytes that hold `bits` bits.
constexpr sim_u64 BytesFor(sim_u64 bits) {
  return (bits + 7) / 8;
}

inline bool GetBit(const sim_u8 *bytes, sim_u64 bit) {
  return bytes[bit / 8] >> (bit % 8) & 1;
}

inline void PutBit(sim_u8 *bytes, sim_u64 bit, bool value) {
  const sim_u8 mask = static_cast<sim_u8>(1u << (bit % 8));
  bytes[bit / 8] = static_cast<sim_u8>(value ? bytes[bit / 8] | mask : bytes[bit / 8] & ~mask);
}

// Cell 0 is nearest TDO; a clock moves every cell's bit to the cell before.
struct ShiftRegister {
  sim_u8 *bytes;
  sim_u64 length;  // cells in use
  sim_u64 head;    // where cell 0 is in the ring

  bool Get(sim_u64 cell) const {
    return GetBit(bytes, Place(cell));
  }

  void Put(sim_u64 cell, bool value) {
    PutBit(bytes, Place(cell), value);
  }

  // One rising edge in a Shift state. A register of no cells is a wire.
  void Clock(bool tdi) {
    if (length == 0) {
      return;
    }
    PutBit(bytes, head, tdi);
    head = head + 1 == length ? 0 : head + 1;
  }

 private:
  sim_u64 Place(sim_u64 cell) const {
    return cell < length - head ? head + cell : cell - (length - head);
  }
};

// One device's stretch of the shift register: its register's bit 0 is cell 0 of the stretch.
struct Cells {
  ShiftRegister *shift;
  sim_u64 first;
  sim_u64 count;

  bool Get(sim_u64 bit) const {
    return shift->Get(first + bit);
  }

  void Put(sim_u64 bit, bool value) const {
    shift->Put(first + bit, value);
  }

  // The whole stretch as a number of at most 32 bits.
  sim_u32 Number() const {
    sim_u32 value = 0;
    for (sim_u64 bit = 0; bit < count; ++bit) {
      value |= static_cast<sim_u32>(Get(bit)) << bit;
    }
    return value;
  }

  // Sets the stretch to a number; cells past its 32 bits become 0.
  void SetNumber(sim_u32 value) const {
    for (sim_u64 bit = 0; bit < count; ++bit) {
      Put(bit, bit < 32 && (value >> bit & 1));
    }
  }
};

}  // namespace sim

#endif
