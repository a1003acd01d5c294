// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One download by the driver itself, its host library, from loading to unloading.
#pragma once

#include <cstdint>
#include <functional>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/platform.h"
#include "tools/rehearse/playhead.h"
#include "tvb/bytes.h"

namespace tool {

enum class DriverEnd {
  kDone,        // it says that it played the file; a comparison in the last record may have failed
  kMismatch,    // a comparison failed
  kNoMemory,    // it could not hold a scan or a register
  kOtherError,  // it found the file malformed, or could not hold a header or trailer
};

struct DriverResult {
  DriverEnd end = DriverEnd::kDone;
  bool mismatch = false;  // a comparison failed, whether or not the driver noticed
  uint64_t position = 0;  // of the image: the next byte that it would have read
};

// What the driver shows while it runs.
DriverView ViewDriver();

// Loads the driver, has it play `image` (not empty, less than 4 GiB) on `lines`, and unloads it.
// `platform` is the one that exists. The driver's state is as at load only in a process that has
// not run it yet. `on_tick` is called now and then.
DriverResult RunDriver(Platform &platform, Lines &lines, tvb::Bytes image,
                       std::function<void()> on_tick);

}  // namespace tool
