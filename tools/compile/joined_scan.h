// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A scan as the whole chain sees it: header, data, trailer.
#pragma once

#include <cstdint>

#include "svf/scan_register.h"
#include "tvb/bytes.h"

namespace tool {

// All bits of a scan in the order in which they are shifted. The bytes belong to somebody else.
struct ScanData {
  uint32_t bits = 0;
  tvb::Bytes tdi;
  bool has_free_bits = false;
  tvb::Bytes smask;  // 0: that TDI bit may be anything; only if there are such
  bool compares = false;
  tvb::Bytes tdo;   // only if it compares
  tvb::Bytes mask;  // 1: that TDO bit is compared
};

// Joins the registers of a scan. The player has header and trailer registers of its own, but it
// does not drive TDI while it shifts them: the devices in the chain would get whatever level the
// line last had. So their bits become part of the scan's data, where nothing is compared.
class ScanJoiner {
 public:
  // The result is good until the next call or until one of the registers changes. Together they
  // have fewer than 2^32 bits.
  ScanData Join(const svf::ScanRegister &header, const svf::ScanRegister &scan,
                const svf::ScanRegister &trailer);

 private:
  svf::RegisterBytes tdi_;
  svf::RegisterBytes smask_;
  svf::RegisterBytes tdo_;
  svf::RegisterBytes mask_;
};

}  // namespace tool
