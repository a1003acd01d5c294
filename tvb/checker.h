// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Finds what is wrong with a file without playing it.
#pragma once

#include <cstdint>
#include <functional>

#include "tvb/bytes.h"
#include "tvb/finding.h"

namespace tvb {

struct CheckResult {
  bool is_tvb = false;  // the header is one; else the only finding is what is wrong with it
  uint64_t records = 0;
  uint64_t errors = 0;  // broken things included
  uint64_t warnings = 0;
  uint64_t unchecked = 0;  // bytes at the end that no record could be found in
};

// Reports everything that is wrong with `image`, in the order of the file but for what shows only
// at its end. One fault is one finding: what merely follows from it is not reported. Past a fault
// the check goes on at the end that the record's own length tells, if a record begins there.
// Takes time linear in the image. `progress`, if given, is called with the offset that the check
// has come to.
CheckResult CheckImage(Bytes image, const Findings::Report &report,
                       const std::function<void(uint64_t)> &progress = {});

}  // namespace tvb
