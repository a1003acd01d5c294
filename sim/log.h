// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The log of scans, in memory of a fixed size: records one after another, each a sim_scan and then
// its bits, four pairs to a byte from the least significant, TDI before TDO.
#ifndef SIM_LOG_H
#define SIM_LOG_H

#include "shift_register.h"

namespace sim {

struct Log {
  sim_u8 *memory;    // aligned to 8
  sim_u64 capacity;  // bytes, a multiple of 8
  sim_u64 used;      // bytes of whole records
  sim_scan *open;    // the scan under way, after the whole records; null: none or dropped
  sim_scan *newest;  // the last scan if it was logged: its idle clocks are still counted
  sim_u64 dropped;
  sim_u32 number;  // of the last scan

  void Clear();

  // Capture, `count` bits shifted after `first` earlier ones (the first as the lowest of a number),
  // Update after so many bits, and each clock in Run-Test/Idle.
  void Begin(sim_scan_kind kind);
  void Add(sim_u64 first, unsigned count, sim_u32 tdi, sim_u32 tdo);
  void End(sim_u64 bits);

  // Whether the scan under way may have so many bits; true where there is none.
  bool HasRoomFor(sim_u64 bits) const {
    return open == nullptr || bits <= Room();
  }

  // The scan under way, if any, is not logged and counts as dropped.
  void Cut();

  void Idle() {
    if (newest != nullptr) {
      ++newest->idle_clocks;
    }
  }

  // The record at or after another's end; null when there is none.
  const sim_scan *First() const;
  const sim_scan *Next(const sim_scan *scan) const;

 private:
  static constexpr unsigned kPairsPerByte = 4;

  sim_u64 Room() const {
    return (capacity - used - sizeof(sim_scan)) * kPairsPerByte;
  }
  const sim_scan *At(sim_u64 offset) const;
  void Drop();
};

}  // namespace sim

#endif
