// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a download takes on a board: pin calls, clocks, waits, and the time of them all.
#pragma once

#include <cstdint>
#include <string>

#include "tools/rehearse/board_clock.h"
#include "tools/rehearse/lines.h"

namespace tool {

// Clocks in all states together.
uint64_t AllClocks(const LineCounts &counts);

// The table of `--time`, a few lines. `call_time`: what a pin call takes, in nanoseconds.
std::string TimeTable(const LineCounts &counts, const BoardClock &clock, double call_time);

}  // namespace tool
