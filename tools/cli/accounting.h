// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a download costs on a board: pin calls, clocks, waits, and the time of them all.
#pragma once

#include <cstdint>
#include <string>

#include "tools/rehearse/board_clock.h"
#include "tools/rehearse/lines.h"

namespace tool {

// A time as people read it: "1.234 s", "12.3 ms", "1:02:03 h".
std::string TimeText(uint64_t nanoseconds);

// A number with its thousands apart: "1,234,567".
std::string NumberText(uint64_t number);

// A number of things: "1 scan", "1,234 scans".
std::string CountText(uint64_t number, const char *noun);

// Clocks in all states together.
uint64_t AllClocks(const LineCounts &counts);

// The table of `--time`, a few lines. `call_time`: what a pin call takes, in nanoseconds.
std::string TimeTable(const LineCounts &counts, const BoardClock &clock, uint64_t call_time);

}  // namespace tool
