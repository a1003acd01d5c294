// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A scan as the whole chain sees it: header, data, trailer, and the scans that resume it.
#pragma once

#include <cstdint>

#include "svf/scan_register.h"
#include "tvb/record.h"

namespace tool {

// Concatenates bits in the order of register bytes.
class BitQueue {
 public:
  // Appends the first `bits` bits of `more`; the unused bits of its last byte are 0.
  void Append(tvb::Bytes more, uint32_t bits);
  void AppendZeros(uint32_t bits);
  void Clear();

  tvb::Bytes bytes() const {
    return bytes_;
  }

 private:
  void Grow(uint32_t bits);

  svf::RegisterBytes bytes_;
  uint64_t bits_ = 0;
};

// Joins the registers of a scan. The player has header and trailer registers of its own, but it
// does not drive TDI while it shifts them, nor compare TDO: the devices in the chain would get the
// last level of the line. So their bits become part of the scan's data. A scan that resumes a
// paused one goes on shifting where that stopped, so its bits follow.
class ScanJoiner {
 public:
  // Appends the bits of a scan, in shift order. All scans together have fewer than 2^32 bits.
  void Add(const svf::ScanRegister &header, const svf::ScanRegister &scan,
           const svf::ScanRegister &trailer);

  // Makes Scan() independent of the registers. Required before another Add().
  void Keep();

  // Everything since Clear(), with the bits that are compared and those that are don't-care. Valid
  // until the next call of another function or, but for Keep(), until one of the registers changes.
  tvb::Shift Scan() const;

  void Clear();

 private:
  void Append(const svf::ScanRegister &part);

  const svf::ScanRegister *only_ = nullptr;  // all there is, not copied
  uint32_t bits_ = 0;
  bool has_free_bits_ = false;
  bool compares_ = false;
  BitQueue tdi_;
  BitQueue smask_;
  BitQueue tdo_;
  BitQueue mask_;
};

}  // namespace tool
