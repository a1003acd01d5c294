// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reports the result of a finished rehearsal to the user.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/cli/command.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/play_input.h"
#include "tools/rehearse/rehearsal.h"
#include "tools/report/data.h"

namespace tool {

// Reports on standard error why the rehearsal did not end well, if so, and returns the exit code.
// `input` is the played file. Moves the rehearsal's playhead to the end of the file or to the
// faulty record.
int TellVerdict(Rehearsal &rehearsal, const PlayInput &input);

// How a file ended, by the exit code: "failed", "done, every comparison held".
const char *VerdictWords(const Rehearsal &rehearsal, int code);

// The last line of the output: what was played and, by the exit code, how it ended.
std::string Summary(Rehearsal &rehearsal, int code);

// What the download takes on a board, a figure a line: the pin calls, clocks and waits with their
// number, then times, in nanoseconds.
std::vector<ReportFigure> TimeFigures(const LineCounts &counts, uint64_t waits, uint64_t waited,
                                      double call_time);

// The table of `--time`, a few lines: the cost of the download on a board in pin calls, clocks,
// waits and time. `call_time`: the duration of a pin call in nanoseconds.
std::string TimeTable(const LineCounts &counts, const BoardClock &clock, double call_time);

}  // namespace tool
