// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Converts a TVB file to SVF.
#pragma once

#include "tools/cli/input_file.h"
#include "tools/cli/output_file.h"
#include "tvb/player.h"

namespace tool {

// Writes the SVF of `file`, which must have no broken record, to `out`: one statement per record,
// in playing order. Loops, which SVF does not have, are unrolled; a pair of FREQUENCY 0 and
// FREQUENCY f is one statement; a record without effect becomes a comment, or nothing if it is the
// run-test that closes the file. `player`: what plays it; returned as the file leaves it. Throws
// Failure for what has no SVF form.
tvb::Player Decompile(TvbFile &file, OutputFile &out, const tvb::Player &player = {});

}  // namespace tool
