// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What `tvb play` does, without files.
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

// Plays the image, which has a good header and is not long, in a driver that has just been loaded,
// with all that can watch watching, and passes verdict. `chain` null: to an echo. `judge` is shown
// the rehearsal and the exit code.
void Rehearse(tvb::Bytes image, tool::ChainTarget *chain, const tool::RehearsalOptions &options,
              const std::function<void(tool::Rehearsal &rehearsal, int code)> &judge);

}  // namespace fuzz
