// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Packed bits: bit n is bit n mod 8 of byte n div 8, least significant first.
#ifndef SIM_BITS_H
#define SIM_BITS_H

#include "sim.h"

namespace sim {

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

}  // namespace sim

#endif
