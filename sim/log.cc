// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "log.h"

namespace {

constexpr unsigned kPairsPerByte = 4;

sim_u8 *Pairs(sim_scan *scan) {
  return reinterpret_cast<sim_u8 *>(scan + 1);
}

// The low 16 bits with a zero above each.
sim_u32 SpreadOut(sim_u32 bits) {
  bits &= 0xffff;
  bits = (bits | bits << 8) & 0x00ff00ff;
  bits = (bits | bits << 4) & 0x0f0f0f0f;
  bits = (bits | bits << 2) & 0x33333333;
  return (bits | bits << 1) & 0x55555555;
}

int PairBit(const sim_scan *scan, sim_u32 bit, unsigned which) {
  if (bit >= scan->bits) {
    return 0;
  }
  const sim_u8 *pairs = reinterpret_cast<const sim_u8 *>(scan + 1);
  return pairs[bit / kPairsPerByte] >> (bit % kPairsPerByte * 2 + which) & 1;
}

// Bytes of a record, padded so that the next one is aligned.
sim_u64 RecordBytes(const sim_scan *scan) {
  const sim_u64 pair_bytes = (static_cast<sim_u64>(scan->bits) + kPairsPerByte - 1) / kPairsPerByte;
  return (sizeof(sim_scan) + pair_bytes + 7) & ~static_cast<sim_u64>(7);
}

}  // namespace

namespace sim {

void Log::Clear() {
  used = 0;
  open = nullptr;
  newest = nullptr;
  dropped = 0;
  number = 0;
}

void Log::Begin(sim_scan_kind kind) {
  newest = nullptr;
  ++number;
  if (capacity - used < sizeof(sim_scan)) {
    Drop();
    return;
  }
  open = reinterpret_cast<sim_scan *>(memory + used);
  *open = sim_scan{static_cast<sim_u32>(kind), number, 0, 0};
}

void Log::Add(sim_u64 first, unsigned count, sim_u32 tdi, sim_u32 tdo) {
  if (!HasRoomFor(first + count)) {
    Drop();
  }
  if (open == nullptr) {
    return;
  }
  constexpr unsigned kPairsAtOnce = 16;
  for (unsigned i = 0; i < count; i += kPairsAtOnce) {
    const unsigned pairs = count - i < kPairsAtOnce ? count - i : kPairsAtOnce;
    PutBits(Pairs(open), 2 * (first + i), 2 * pairs,
            SpreadOut(tdi >> i) | SpreadOut(tdo >> i) << 1);
  }
}

void Log::End(sim_u64 bits) {
  if (open == nullptr) {
    return;
  }
  open->bits = static_cast<sim_u32>(bits);
  used += RecordBytes(open);
  newest = open;
  open = nullptr;
}

void Log::Cut() {
  if (open != nullptr) {
    Drop();
  }
}

const sim_scan *Log::First() const {
  return At(0);
}

const sim_scan *Log::Next(const sim_scan *scan) const {
  const sim_u8 *record = reinterpret_cast<const sim_u8 *>(scan);
  return At(static_cast<sim_u64>(record - memory) + RecordBytes(scan));
}

const sim_scan *Log::At(sim_u64 offset) const {
  return offset < used ? reinterpret_cast<const sim_scan *>(memory + offset) : nullptr;
}

void Log::Drop() {
  open = nullptr;
  ++dropped;
}

}  // namespace sim

extern "C" {

int sim_scan_tdi(const struct sim_scan *scan, sim_u32 bit) {
  return PairBit(scan, bit, 0);
}

int sim_scan_tdo(const struct sim_scan *scan, sim_u32 bit) {
  return PairBit(scan, bit, 1);
}
}
