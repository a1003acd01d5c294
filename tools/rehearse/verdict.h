// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What came of a rehearsal that has been run, for the user.
#pragma once

#include <cstdint>
#include <string>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/rehearsal.h"

namespace tool {

// Reports why it did not end well, if so, on standard error, and returns the exit code. `file` is
// what was played. Takes the rehearsal's playhead to the end of the file or to the record that is
// at fault.
int TellVerdict(Rehearsal &rehearsal, const TvbFile &file);

// The line that ends the output: what was played and, by the exit code, how it ended.
std::string Summary(Rehearsal &rehearsal, int code);

// The table of `--time`, a few lines: what the download costs on a board, in pin calls, clocks,
// waits and time. `call_time`: what a pin call takes, in nanoseconds.
std::string TimeTable(const LineCounts &counts, const BoardClock &clock, double call_time);

}  // namespace tool
