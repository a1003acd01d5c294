// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The plain delay in microseconds.
#include <gtest/gtest.h>

#include <vector>

#include "engine_fixture.h"

namespace {

class RuntestDelayTest : public shim::Test {
 protected:
  static uint64_t Units(uint64_t us) {
    const uint64_t before = shim::DelayCount();
    Quorlan_Delay(us);
    return shim::DelayCount() - before;
  }
};

TEST_F(RuntestDelayTest, Examples) {
  EXPECT_EQ(Units(0), 1u);
  EXPECT_EQ(Units(250), 3u);
}

TEST_F(RuntestDelayTest, OneUnitMoreThanNeeded) {
  EXPECT_EQ(Units(1), 1u);
  EXPECT_EQ(Units(99), 1u);
  EXPECT_EQ(Units(100), 2u);
  EXPECT_EQ(Units(101), 2u);
  EXPECT_EQ(Units(199), 2u);
  EXPECT_EQ(Units(200), 3u);
  EXPECT_EQ(Units(1000000), 10001u);
}

TEST_F(RuntestDelayTest, MicrosecondsAre64Bits) {
  EXPECT_EQ(Units(5000000000), 50000001u);
}

TEST_F(RuntestDelayTest, EachUnitIs100Microseconds) {
  Quorlan_Delay(250);
  EXPECT_EQ(shim::Delays(), (std::vector<unsigned long>{429500, 429500, 429500}));
  EXPECT_EQ(shim::SchedClockReadings(), 0u);
}

TEST_F(RuntestDelayTest, LeavesTheFrequencyAlone) {
  Quorlan_Delay(1000);
  EXPECT_EQ(g_freq, 0u);
}

}  // namespace
