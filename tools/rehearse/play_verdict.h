// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What came of a rehearsal, for the user.
#pragma once

#include "tools/cli/input_file.h"
#include "tools/rehearse/rehearsal.h"

namespace tool {

// Reports why a rehearsal that has been run did not end well, if so, on standard error, and returns
// the exit code. `file` is what was played. Takes the rehearsal's playhead to the end of the file
// or to the record that is at fault.
int TellVerdict(Rehearsal &rehearsal, const TvbFile &file);

}  // namespace tool
