// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A scan as the whole chain sees it: header, data, trailer.
#pragma once

#include <cstdint>

#include "svf/scan_register.h"
#include "tvb/record.h"

namespace tool {

// Joins the registers of a scan. The player has header and trailer registers of its own, but it
// does not drive TDI while it shifts them: the devices in the chain would get the last level of the
// line. So their bits become part of the scan's data, where nothing is compared.
class ScanJoiner {
 public:
  // All bits in shift order, with those that are compared and those that are don't-care. The result
  // is valid until the next call or until one of the registers changes. Together the registers have
  // fewer than 2^32 bits.
  tvb::Shift Join(const svf::ScanRegister &header, const svf::ScanRegister &scan,
                  const svf::ScanRegister &trailer);

 private:
  svf::RegisterBytes tdi_;
  svf::RegisterBytes smask_;
  svf::RegisterBytes tdo_;
  svf::RegisterBytes mask_;
};

}  // namespace tool
