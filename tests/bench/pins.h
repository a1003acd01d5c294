// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Four lines that do nothing, and the floor that the driver is measured against: the same calls of
// the same functions, without what led to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "driver/host.h"

namespace bench {

extern const pin_config kPins;

// Driving does nothing, and TDO is low; or it has the levels that were given, one after the other.
extern const pin_operations kIdle;
extern const pin_operations kLevels;
void SetLevels(const uint8_t *levels);

// The calls of a run of the driver, and of these, those that make up a TCK period: TCK low, TDI,
// TMS, TDO, TCK high. Not each period has all of them, and there are calls outside of periods.
struct Recording {
  std::vector<uint8_t> calls;   // a byte a call
  std::vector<uint8_t> steps;   // a byte a period, or a call outside of them
  std::vector<uint64_t> runs;   // how many steps are of one kind, and which
  std::vector<uint8_t> levels;  // those that the driver expected on TDO
  size_t clocks = 0;
};

// Calls `run`, which makes the driver drive the lines by `operations`. TDO has the level that the
// driver expects.
Recording Record(const std::function<void(const pin_operations &operations)> &run);

// The floor, in three forms. By calls: a table tells the function and the line of each. By periods:
// each byte is decided upon. By runs: long runs of periods that drive and read the same lines have
// a loop of their own, in which nothing is decided but TDI's level.
void ReplayCalls(const Recording &recording, const pin_operations &operations);
void ReplayPeriods(const Recording &recording, const pin_operations &operations);
void ReplayRuns(const Recording &recording, const pin_operations &operations);

}  // namespace bench
