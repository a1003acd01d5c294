// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// `tvb play`, without files.
#pragma once

#include <functional>

#include "tools/cli/input_file.h"
#include "tools/rehearse/rehearsal.h"
#include "tools/rehearse/target_chain.h"

namespace fuzz {

// Whether playing the image takes too long for a fuzzer.
bool IsLong(tvb::Bytes image);

// Whether the check finds no error in the image.
bool IsGood(tvb::Bytes image);

// Plays the image, which has a valid header and is not long, in a freshly loaded driver with every
// watcher attached, and reports the verdict. Without a `chain` (null) the target is an echo.
// `judge` receives the rehearsal and the exit code.
void Rehearse(tvb::Bytes image, tool::ChainTarget *chain, const tool::RehearsalOptions &options,
              const std::function<void(tool::Rehearsal &rehearsal, int code)> &judge);

}  // namespace fuzz
