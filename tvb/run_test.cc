// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/run_test.h"

#include <algorithm>
#include <string>

#include "tvb/error.h"
#include "tvb/number.h"
#include "tvb/record.h"

namespace tvb {
namespace {

constexpr uint8_t kRuns = 1;
constexpr uint8_t kDoesNotRun = 0;

constexpr uint64_t kOffset = 10;
constexpr uint64_t kMarker = 32768;
constexpr uint64_t kMostCyclesInField = kLargestNumber - kMarker - kOffset;

// A run-test as the file's fields hold it; 0 where there is no field.
struct Fields {
  uint64_t milliseconds = 0;
  uint64_t microseconds = 0;
  uint64_t cycles = 0;
};

Fields Split(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz) {
  Fields fields;
  fields.cycles = cycles;
  if (microseconds <= kMarker) {
    fields.microseconds = microseconds;
    return fields;
  }
  fields.milliseconds = microseconds / 1000;
  fields.microseconds = microseconds % 1000;
  if (fields.microseconds != 0 && !whole_kilohertz) {
    ++fields.cycles;
  }
  return fields;
}

void CheckLimits(uint64_t microseconds, const Fields &fields) {
  if (microseconds > kLongestTime) {
    throw Error("a run-test of " + std::to_string(microseconds) +
                " microseconds does not fit into a record; write several run-tests");
  }
  if (fields.cycles > kMostCycles) {
    throw Error("a run-test of " + std::to_string(fields.cycles) +
                " cycles is more than the player can count; write several run-tests");
  }
}

void AppendField(Buffer &body, Tag tag, uint64_t stored) {
  body.push_back(tag);
  AppendNumber(body, static_cast<uint32_t>(stored));
}

void AppendCycles(Buffer &body, uint64_t cycles) {
  uint64_t stored = cycles + kOffset;
  AppendField(body, kTagCycles, stored > kMarker ? stored + kMarker : stored);
}

}  // namespace

Buffer RunTestBody(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz) {
  Fields fields = Split(microseconds, cycles, whole_kilohertz);
  CheckLimits(microseconds, fields);
  Buffer body = {kRuns};
  if (fields.milliseconds > 0) {
    AppendField(body, kTagTime, fields.milliseconds + kMarker + kOffset);
  }
  if (fields.microseconds > 0) {
    AppendField(body, kTagTime, fields.microseconds + kOffset);
  }
  if (fields.cycles > 0 || microseconds == 0) {
    uint64_t first = std::min(fields.cycles, kMostCyclesInField);
    AppendCycles(body, first);
    if (fields.cycles > first) {
      AppendCycles(body, fields.cycles - first);
    }
  }
  body.push_back(kTagEnd);
  return body;
}

uint64_t RunTestClocks(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz, uint32_t hz) {
  Fields fields = Split(microseconds, cycles, whole_kilohertz);
  return hz * fields.milliseconds / 1000 + hz * fields.microseconds / 1000000 + fields.cycles;
}

Buffer IdleRunTestBody() {
  return {kDoesNotRun};
}

}  // namespace tvb
