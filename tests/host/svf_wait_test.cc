// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Run-tests: whatever a file asks for, the driver gives at least as many clocks and waits at least
// as long.
#include <gtest/gtest.h>

#include <random>

#include "host.h"
#include "tools/compile/record_writer.h"
#include "tvb/player.h"
#include "tvb/record.h"

namespace {

// What the driver makes of a run-test's body at that frequency.
uint64_t DriverClocks(tvb::Buffer body, uint32_t hz) {
  body.push_back(0);
  g_tvb_buffer = body.data();
  g_tvb_length = body.size();
  g_pos = 1;  // behind the gate byte
  g_freq = hz;
  const uint64_t clocks = Quorlan_ProcessRuntestCmd();
  EXPECT_EQ(g_pos, body.size() - 1);
  g_tvb_buffer = nullptr;
  g_freq = 0;
  return clocks;
}

// The microseconds that the driver holds so many clocks for.
uint64_t DriverMicroseconds(uint64_t clocks, uint32_t hz) {
  return clocks * 1000000 / hz + 1;
}

void Check(uint64_t count, const svf::Decimal &seconds, uint32_t hz) {
  const auto plan = tool::PlanRunTest(count, seconds, hz);
  ASSERT_TRUE(plan);
  if (plan->clocks == 0 || plan->clocks > tvb::kMaxCycles) {
    return;
  }
  const tvb::Buffer body = plan->microseconds > 0
                               ? tvb::RunTestBody(plan->microseconds, 0, hz % 1000 == 0)
                               : tvb::RunTestBody(0, plan->clocks, false);
  const uint64_t clocks = DriverClocks(body, hz);
  EXPECT_EQ(clocks, plan->clocks);
  EXPECT_GE(clocks, count);
  EXPECT_GE(clocks, seconds.TimesUp(hz)) << "at " << hz << " Hz";
  EXPECT_LE(clocks, std::max(count, seconds.TimesUp(hz)) + 1) << "at " << hz << " Hz";
  EXPECT_GE(DriverMicroseconds(clocks, hz), seconds.TimesUp(1000000)) << "at " << hz << " Hz";
}

TEST(SvfWait, GivesBothTheCountAndTheTime) {
  std::mt19937 random(1);
  constexpr uint32_t kRates[] = {1,      7,       999,     1000,     32768,
                                 100000, 1000000, 1843200, 10000000, 66666667};
  for (uint32_t hz : kRates) {
    for (int round = 0; round < 400; ++round) {
      const std::string digits = std::to_string(random() % 100000);
      const std::string exponent = std::to_string(2 + random() % 9);
      const auto seconds = svf::Decimal::Parse(digits + "E-" + exponent);
      ASSERT_TRUE(seconds);
      if (seconds->TimesUp(hz) < 100000000) {
        Check(round % 2 == 0 ? 0 : random() % 100000, *seconds, hz);
      }
    }
  }
}

TEST(SvfWait, WritesATimeWhereItIsExact) {
  const auto millisecond = *svf::Decimal::Parse("1E-3");
  EXPECT_EQ(tool::PlanRunTest(0, millisecond, 1000000)->microseconds, 1000u);
  EXPECT_EQ(tool::PlanRunTest(0, millisecond, 1000000)->clocks, 1000u);
  EXPECT_EQ(tool::PlanRunTest(1001, millisecond, 1000000)->microseconds, 0u);
  EXPECT_EQ(tool::PlanRunTest(0, millisecond, 100)->microseconds, 0u);
  EXPECT_EQ(tool::PlanRunTest(0, millisecond, 100)->clocks, 1u);
}

TEST(SvfWait, KnowsWhatNoRecordHolds) {
  EXPECT_TRUE(tool::PlanRunTest(0, svf::Decimal(2147450), 1));
  EXPECT_FALSE(tool::PlanRunTest(0, svf::Decimal(2147451), 1));
  EXPECT_FALSE(tool::PlanRunTest(0, *svf::Decimal::Parse("1E300"), 1));
}

}  // namespace
