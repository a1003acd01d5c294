// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "log.h"

namespace {

constexpr unsigned kPairsPerByte = 4;

sim_u8 *Pairs(sim_scan *scan) {
  return reinterpret_cast<sim_u8 *>(scan + 1);
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

void Log::Bit(bool tdi, bool tdo) {
  if (open == nullptr) {
    return;
  }
  const sim_u32 slot = open->bits % kPairsPerByte;
  sim_u8 *byte = Pairs(open) + open->bits / kPairsPerByte;
  if (byte == memory + capacity) {
    Drop();
    return;
  }
  const unsigned pair = (tdi ? 1u : 0u) | (tdo ? 2u : 0u);
  *byte = static_cast<sim_u8>((slot == 0 ? 0 : *byte) | pair << slot * 2);
  ++open->bits;
}

void Log::End() {
  if (open == nullptr) {
    return;
  }
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
