// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// How the player is told to wait.
#pragma once

#include <cstdint>
#include <optional>

#include "svf/number.h"

namespace tool {

// A run-test as one record says it: for a time or, if that is 0, for a number of clocks.
struct RunTestPlan {
  uint64_t microseconds = 0;
  uint64_t clocks = 0;  // that the player will give, either way
};

// The player adds a record's time and count up, so one of the two is written: whichever is longer
// at `hz`, the frequency that the player is at. It makes clocks of a time, rounding down, and then
// makes every clock last its period; so a time is kept to only if it gives all the clocks that fill
// it. Where rounding would lose one, the count of clocks that is long enough is written in its
// place. Nothing if the time is longer than a record can hold.
std::optional<RunTestPlan> PlanRunTest(uint64_t count, const svf::Decimal &seconds, uint32_t hz);

}  // namespace tool
