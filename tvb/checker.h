// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks a file without playing it.
#pragma once

#include <cstdint>
#include <functional>

#include "tvb/bytes.h"
#include "tvb/finding.h"
#include "tvb/seal.h"

namespace tvb {

struct CheckResult {
  bool is_tvb = false;  // the header is valid; if not, its fault is the only finding
  uint64_t records = 0;
  uint64_t errors = 0;  // including broken things
  uint64_t warnings = 0;
  uint64_t unchecked = 0;  // bytes at the end in which no record was found
  SealView seal;           // of a file with a valid header
};

// Reports everything that is wrong with `image`, in file order except for what shows only at its
// end. Each fault is reported once, without its consequences. After a fault the check continues at
// the end given by the record's own length, if a record begins there. Takes time linear in the
// image. `progress`, if given, is called with the offset reached.
CheckResult CheckImage(Bytes image, const Findings::Report &report,
                       const std::function<void(uint64_t)> &progress = {});

}  // namespace tvb
