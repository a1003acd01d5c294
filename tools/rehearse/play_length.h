// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// How long a file is to play.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"
#include "tvb/record_view.h"

namespace tool {

// Clocks and records of a file, loops played out; the driver's own scans at its beginning are not
// counted. A file that is not well-formed counts as far as it is.
struct PlayLength {
  uint64_t clocks = 0;
  uint64_t records = 0;
};

PlayLength MeasurePlay(tvb::Bytes image, const tvb::HeaderView &header);

}  // namespace tool
