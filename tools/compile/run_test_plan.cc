// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/run_test_plan.h"

#include "tvb/player.h"
#include "tvb/record.h"

namespace tool {
namespace {

constexpr uint64_t kMicrosecondsInSecond = 1000000;

}  // namespace

std::optional<RunTestPlan> PlanRunTest(uint64_t count, const svf::Decimal &seconds, uint32_t hz) {
  const uint64_t microseconds = seconds.TimesUp(kMicrosecondsInSecond);
  if (microseconds > tvb::kMaxTime) {
    return std::nullopt;
  }
  const uint64_t clocks_of_time = seconds.TimesUp(hz);
  if (clocks_of_time <= count) {
    return RunTestPlan{0, count};
  }
  const bool whole = seconds.TimesDown(kMicrosecondsInSecond) == microseconds;
  const uint64_t clocks = tvb::RunTestClocks(microseconds, 0, tvb::IsWholeKilohertz(hz), hz);
  if (whole && clocks >= clocks_of_time && clocks <= tvb::kMaxCycles) {
    return RunTestPlan{microseconds, clocks};
  }
  return RunTestPlan{0, clocks_of_time};
}

}  // namespace tool
