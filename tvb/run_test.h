// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Bodies of run-test records: idle clocks for a number of cycles, for a time, or both.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"
#include "tvb/clock_rate.h"

namespace tvb {

// The most cycles that the player can clock in one run-test.
constexpr uint64_t kMostCycles = 0x7FFFFFFF;

// The longest time, in microseconds, that one field of a file can hold: almost 25 days.
constexpr uint64_t kLongestTime = (0x7FFFFFFFull - 32778) * 1000;

// The body of a run-test of `microseconds` and then `cycles` more; either may be 0. The player adds
// up the clocks of both.
//
// Numbers are stored with offsets, a cycle count n as n + 10 and, where that passes the marker
// 32768, as n + 32778; a time of n microseconds up to 32768 as n + 10, one of n milliseconds as
// n + 32778. Every number of cycles is exact. A longer time that is no whole number of milliseconds
// takes two fields. Since the player rounds the clocks of each field down, two of them could give
// one clock less than the whole time would; one cycle is added there, unless `whole_kilohertz`,
// when the milliseconds give whole clocks and nothing is lost. So a time is never cut short.
//
// Throws Error for more than kMostCycles or a longer time than kLongestTime.
Buffer RunTestBody(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz);

// The number of clocks that the player makes of that body at a frequency of `hz`.
uint64_t RunTestClocks(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz, uint32_t hz);

// The body of a run-test that does not run: it drives no line and changes nothing.
Buffer IdleRunTestBody();

}  // namespace tvb
