// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Time, controlled by the test: sched_clock, log_get_timestamp_ms and the busy-wait __const_udelay.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace shim {

// Sets the successive readings of sched_clock in nanoseconds; after the last, each reading is 1 ns
// later. After Reset() there are none and the clock starts at 0.
void SetSchedClock(std::vector<uint64_t> readings);

// The alternative: the clock starts at 0 and each reading is `ns` after the one before.
void SetSchedClockStep(uint64_t ns);

// Calls `observer` at each reading of sched_clock; an empty one removes it.
void OnSchedClock(std::function<void()> observer);
uint64_t SchedClockReadings();

// Sets the successive readings of log_get_timestamp_ms; the last one repeats. 0 after Reset().
void SetTimestamps(std::vector<int64_t> readings);
uint64_t TimestampReadings();

// The argument of each __const_udelay, in order; only the first 4,000,000 are kept.
const std::vector<unsigned long> &Delays();
uint64_t DelayCount();

void ResetClock();

}  // namespace shim
