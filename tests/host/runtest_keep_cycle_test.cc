// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Idle clocking: the clocks themselves, and the wait that makes up for clocking too fast.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "engine_fixture.h"

namespace {

constexpr unsigned long kUnit = 429500;  // 100 microseconds

class RuntestKeepCycleTest : public EngineTest {
 protected:
  // The units waited for by `cycles` periods at `frequency` whose clocking takes `ns`.
  uint64_t Units(int32_t cycles, uint64_t frequency, uint64_t ns) {
    pins.Record(false);
    g_freq = frequency;
    shim::SetSchedClock({70000, 70000 + ns});
    const uint64_t before = shim::DelayCount();
    Quorlan_KeepCycle(cycles);
    return shim::DelayCount() - before;
  }
};

TEST_F(RuntestKeepCycleTest, ClocksWithTdiAndTmsLow) {
  Quorlan_KeepCycle(3);
  EXPECT_EQ(pins.Text(), "I0 M0 K0 K1 K0 K1 K0 K1");
}

TEST_F(RuntestKeepCycleTest, OneCycle) {
  Quorlan_KeepCycle(1);
  EXPECT_EQ(pins.Text(), "I0 M0 K0 K1");
}

TEST_F(RuntestKeepCycleTest, NoCycleStillDrivesTdiAndTms) {
  Quorlan_KeepCycle(0);
  EXPECT_EQ(pins.Text(), "I0 M0");
}

TEST_F(RuntestKeepCycleTest, ReadsTheClockAroundTheClocksAlone) {
  std::vector<uint64_t> writes;
  shim::OnSchedClock([&] { writes.push_back(pins.writes()); });
  Quorlan_KeepCycle(5);
  EXPECT_EQ(writes, (std::vector<uint64_t>{2, 12}));
}

TEST_F(RuntestKeepCycleTest, WaitsInUnitsOf100Microseconds) {
  EXPECT_EQ(Units(1000, 1000000, 300000), 8u);
  EXPECT_EQ(shim::Delays(), std::vector<unsigned long>(8, kUnit));
}

TEST_F(RuntestKeepCycleTest, WaitsOneUnitMoreThanThereIsLeft) {
  // 100 cycles at 1 MHz require 101 microseconds.
  EXPECT_EQ(Units(100, 1000000, 2000), 1u);  // 99 left
  EXPECT_EQ(Units(100, 1000000, 1000), 2u);  // 100 left
  EXPECT_EQ(Units(100, 1000000, 0), 2u);     // 101 left
  EXPECT_EQ(Units(200, 1000000, 2000), 2u);  // 199 left
  EXPECT_EQ(Units(200, 1000000, 1000), 3u);  // 200 left
  EXPECT_EQ(Units(1000, 1000000, 1000), 11u);
}

TEST_F(RuntestKeepCycleTest, ElapsedMicrosecondsAreTruncated) {
  EXPECT_EQ(Units(100, 1000000, 1999), 2u);  // 1 elapsed, 100 left
  EXPECT_EQ(Units(99, 1000000, 999), 2u);    // 0 elapsed, 100 left
}

TEST_F(RuntestKeepCycleTest, SlowClockingWaitsForNothing) {
  // 5 cycles at 1 MHz require 6 microseconds.
  EXPECT_EQ(Units(5, 1000000, 6000), 0u);
  EXPECT_EQ(Units(5, 1000000, 6001), 0u);
  EXPECT_EQ(Units(5, 1000000, 5000000000), 0u);
  EXPECT_EQ(Units(5, 1000000, 5999), 1u);
}

TEST_F(RuntestKeepCycleTest, NoCycleRequiresOneMicrosecond) {
  EXPECT_EQ(Units(0, 1000000, 0), 1u);
  EXPECT_EQ(Units(0, 1000000, 999), 1u);
  EXPECT_EQ(Units(0, 1000000, 1000), 0u);
}

TEST_F(RuntestKeepCycleTest, DivisionTruncates) {
  // 5 cycles at 10 MHz require 0 + 1 microseconds.
  EXPECT_EQ(Units(5, 10000000, 999), 1u);
  EXPECT_EQ(Units(5, 10000000, 1000), 0u);
  // 19 at 10 MHz require 1 + 1.
  EXPECT_EQ(Units(19, 10000000, 1999), 1u);
  EXPECT_EQ(Units(19, 10000000, 2000), 0u);
}

TEST_F(RuntestKeepCycleTest, SlowFrequenciesTakeLong) {
  EXPECT_EQ(Units(1, 1, 0), 10001u);  // 1000001 microseconds
  EXPECT_EQ(Units(7, 1000, 0), 71u);  // 7001
}

TEST_F(RuntestKeepCycleTest, ProductNeedsMoreThan32Bits) {
  EXPECT_EQ(Units(3000, 1000000, 0), 31u);    // 3 * 10^9
  EXPECT_EQ(Units(5000, 1000000, 0), 51u);    // 5 * 10^9
  EXPECT_EQ(Units(50000, 1000000, 0), 501u);  // required * 1000 passes 32 bits as well
  EXPECT_EQ(Units(5000000, 1000000, 0), 50001u);
}

TEST_F(RuntestKeepCycleTest, FrequencyIsItsLow32BitsUnsigned) {
  EXPECT_EQ(Units(1000, 0x100000000ull + 1000000, 0), 11u);
  EXPECT_EQ(Units(1000, 0xFFFFFFFF00000000ull + 1000000, 0), 11u);
  // 3 GHz: 10^6 cycles require 333 + 1 microseconds.
  EXPECT_EQ(Units(1000000, 3000000000, 0), 4u);
  EXPECT_EQ(Units(1000000, 3000000000, 333999), 1u);
  EXPECT_EQ(Units(1000000, 3000000000, 334000), 0u);
}

TEST_F(RuntestKeepCycleTest, UnsetFrequencyBecomes1Megahertz) {
  EXPECT_EQ(Units(1000, 0, 0), 11u);
  EXPECT_EQ(g_freq, 1000000u);
  EXPECT_EQ(Units(5, 0, 6000), 0u);
  EXPECT_EQ(g_freq, 1000000u);
}

TEST_F(RuntestKeepCycleTest, SetFrequencyStays) {
  Units(5, 123, 0);
  EXPECT_EQ(g_freq, 123u);
}

TEST_F(RuntestKeepCycleTest, ClockThatGoesBackWaitsForNothing) {
  shim::SetSchedClock({5000, 4999});
  Quorlan_KeepCycle(2);
  EXPECT_EQ(pins.Text(), "I0 M0 K0 K1 K0 K1");
  EXPECT_EQ(shim::DelayCount(), 0u);
  EXPECT_EQ(g_freq, 0u) << "returns before the default is set";
}

TEST_F(RuntestKeepCycleTest, ClockReadingsAreUnsigned) {
  shim::SetSchedClock({0x7FFFFFFFFFFFFFFF, 0x8000000000000000});
  Quorlan_KeepCycle(1);
  EXPECT_EQ(shim::DelayCount(), 1u);
}

TEST_F(RuntestKeepCycleTest, ClockThatStandsStillWaits) {
  shim::SetSchedClock({9, 9});
  Quorlan_KeepCycle(2);
  EXPECT_EQ(shim::DelayCount(), 1u);
}

TEST_F(RuntestKeepCycleTest, FrequencyWithoutLowBitsNeitherClocksNorWaits) {
  for (const uint64_t frequency : {0x100000000ull, 0xFFFFFFFF00000000ull}) {
    g_freq = frequency;
    for (const int32_t cycles : {0, 1, 1000, -1}) {
      pins.ClearEvents();
      Quorlan_KeepCycle(cycles);
      EXPECT_EQ(pins.Text(), "I0 M0");
    }
    EXPECT_EQ(g_freq, frequency);
  }
  EXPECT_EQ(shim::DelayCount(), 0u);
}

TEST_F(RuntestKeepCycleTest, NegativeCountsNeitherClockNorWait) {
  for (const uint64_t frequency : {0ull, 1000000ull, 1ull}) {
    for (const int32_t cycles : {-1, -1000, std::numeric_limits<int32_t>::min()}) {
      g_freq = frequency;
      pins.ClearEvents();
      Quorlan_KeepCycle(cycles);
      EXPECT_EQ(pins.Text(), "I0 M0");
    }
  }
  EXPECT_EQ(shim::DelayCount(), 0u);
}

TEST_F(RuntestKeepCycleTest, ReportsAndAllocatesNothing) {
  Quorlan_KeepCycle(10);
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_TRUE(shim::Allocations().empty());
  EXPECT_EQ(pins.reads(), 0u);
}

TEST_F(RuntestKeepCycleTest, ARunThatWasStoppedStillClocks) {
  g_status = 0;
  Quorlan_KeepCycle(1);
  EXPECT_EQ(pins.Text(), "I0 M0 K0 K1");
}

}  // namespace
