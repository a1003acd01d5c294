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

// Gets, or sets, bits from `bit` on as a number, the first as its lowest; at most kBitsAtOnce.
constexpr unsigned kBitsAtOnce = 56;

constexpr sim_u64 Ones(unsigned count) {
  return (static_cast<sim_u64>(1) << count) - 1;
}

inline sim_u64 GetBits(const sim_u8 *bytes, sim_u64 bit, unsigned count) {
  sim_u64 value = 0;
  for (sim_u64 i = BytesFor(bit + count); i-- > bit / 8;) {
    value = value << 8 | bytes[i];
  }
  return value >> bit % 8 & Ones(count);
}

inline void PutBits(sim_u8 *bytes, sim_u64 bit, unsigned count, sim_u64 value) {
  sim_u64 mask = Ones(count) << bit % 8;
  value <<= bit % 8;
  for (sim_u64 i = bit / 8; mask != 0; ++i, mask >>= 8, value >>= 8) {
    bytes[i] = static_cast<sim_u8>((bytes[i] & ~mask) | (value & mask));
  }
}

// Cell 0 is nearest TDO; a clock moves every cell's bit to the cell before. Clocks act on a window
// of bits; the cells lag behind until Keep().
struct ShiftRegister {
  sim_u8 *bytes;
  sim_u64 length;  // cells in use
  sim_u64 head;    // where cell 0 is in the ring
  sim_u64 out;     // what leaves: the window's bits, then zeros
  sim_u32 in;      // what has come in
  unsigned at;     // clocks since the window began
  unsigned delay;  // clocks after which a bit leaves that comes in; kWindow: not in this window

  static constexpr unsigned kWindow = 32;

  // The bit that leaves next. A register of no cells has 1.
  bool First() const {
    return out >> at & 1;
  }

  void SetFirst(bool bit) {
    out ^= static_cast<sim_u64>(bit != First()) << at;
  }

  // One rising edge in a Shift state. Returns true at the end of the window.
  bool Clock(bool tdi) {
    in |= static_cast<sim_u32>(tdi) << at;
    if (delay < kWindow) {
      out ^= static_cast<sim_u64>(tdi) << (at + delay);
    }
    return ++at == kWindow;
  }

  // Lays out the register anew, with no clocks done.
  void Clear() {
    length = 0;
    head = 0;
    in = 0;
    at = 0;
  }

  // Moves the cells by the window's clocks.
  void Keep() {
    if (at < length) {
      Put(0, at, in);
      head = Place(at);
    } else if (length != 0) {
      head = 0;
      Put(0, static_cast<unsigned>(length), in >> (at - static_cast<unsigned>(length)));
    }
    in = 0;
    at = 0;
  }

  // Begins another window. `inverted` has a 1 for each bit that leaves the wrong way.
  void Load(sim_u32 inverted) {
    delay = length == 0 || length > kWindow ? kWindow : static_cast<unsigned>(length);
    out = length == 0 ? ~static_cast<sim_u64>(0) : Get(0, delay) ^ inverted;
  }

  // Cells from `cell` on, as GetBits() and PutBits() have them.
  sim_u64 Get(sim_u64 cell, unsigned count) const {
    const sim_u64 place = Place(cell);
    const unsigned before = BeforeWrap(place, count);
    return GetBits(bytes, place, before) | GetBits(bytes, 0, count - before) << before;
  }

  void Put(sim_u64 cell, unsigned count, sim_u64 value) {
    const sim_u64 place = Place(cell);
    const unsigned before = BeforeWrap(place, count);
    PutBits(bytes, place, before, value);
    PutBits(bytes, 0, count - before, value >> before);
  }

 private:
  sim_u64 Place(sim_u64 cell) const {
    return cell < length - head ? head + cell : cell - (length - head);
  }

  // How many of `count` cells from that place on the ring has before it begins anew.
  unsigned BeforeWrap(sim_u64 place, unsigned count) const {
    return count < length - place ? count : static_cast<unsigned>(length - place);
  }
};

// One device's stretch of the shift register: its register's bit 0 is cell 0 of the stretch.
struct Cells {
  ShiftRegister *shift;
  sim_u64 first;
  sim_u64 count;

  // The whole stretch as a number of at most 32 bits.
  sim_u32 Number() const {
    return static_cast<sim_u32>(shift->Get(first, static_cast<unsigned>(count)));
  }

  // Sets the stretch to a number; cells past its 32 bits become 0.
  void SetNumber(sim_u32 value) const {
    Fill([value](sim_u64 bit, unsigned) -> sim_u64 { return bit == 0 ? value : 0; });
  }

  // Sets the stretch to packed bits, or the bits to the stretch.
  void CopyFrom(const sim_u8 *bytes) const {
    Fill([bytes](sim_u64 bit, unsigned bits) { return GetBits(bytes, bit, bits); });
  }
  void CopyTo(sim_u8 *bytes) const {
    for (sim_u64 bit = 0; bit < count; bit += kBitsAtOnce) {
      PutBits(bytes, bit, BitsFrom(bit), shift->Get(first + bit, BitsFrom(bit)));
    }
  }

  // Sets the stretch to what `bits_at` returns for a bit and the number of bits from there on.
  template <typename BitsAt>
  void Fill(const BitsAt &bits_at) const {
    for (sim_u64 bit = 0; bit < count; bit += kBitsAtOnce) {
      shift->Put(first + bit, BitsFrom(bit), bits_at(bit, BitsFrom(bit)));
    }
  }

 private:
  unsigned BitsFrom(sim_u64 bit) const {
    return count - bit < kBitsAtOnce ? static_cast<unsigned>(count - bit) : kBitsAtOnce;
  }
};

}  // namespace sim

#endif
