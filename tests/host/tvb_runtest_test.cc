// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The numbers of run-test records: what is stored, and that it gives the clocks that were asked
// for.
#include <gtest/gtest.h>

#include "tvb/error.h"
#include "tvb/player.h"
#include "tvb/record.h"
#include "tvb_reference.h"

namespace {

using tvb::Buffer;
using tvb::RunTestBody;

constexpr uint32_t kRates[] = {1, 999, 1000, 32768, 999999, 1000000, 1234567, 25000000, 2147483647};
constexpr uint64_t kTimes[] = {0,     1,     999,   1000,    32767,    32768,     32769,
                               33000, 33001, 65536, 1000000, 12345678, 3600000000};

// The clocks of a body at `hz` by the reader's own arithmetic.
uint64_t Clocks(const Buffer &body, uint64_t hz) {
  tvb_reference::Input in(body);
  EXPECT_EQ(in.Byte(), 1);
  uint64_t clocks = tvb_reference::RunTestClocks(in, hz);
  EXPECT_TRUE(in.AtEnd());
  return clocks;
}

TEST(TvbRunTest, CyclesSkipTheMarker) {
  EXPECT_EQ(RunTestBody(0, 0, true), Buffer({1, 20, 10, 23}));
  EXPECT_EQ(RunTestBody(0, 1, true), Buffer({1, 20, 11, 23}));
  // 32758 is stored as 32768, the last number below the marker's reach; 32759 takes the marker.
  EXPECT_EQ(RunTestBody(0, 32758, true), Buffer({1, 20, 0x80, 0x80, 0x02, 23}));
  EXPECT_EQ(RunTestBody(0, 32759, true), Buffer({1, 20, 0x81, 0x80, 0x04, 23}));
}

TEST(TvbRunTest, EveryNumberOfCyclesIsExact) {
  for (uint64_t around : {0ull, 100ull, 32758ull, 32768ull, 65526ull, 65536ull, 1ull << 24,
                          0x7FFFFFFFull - 32778, 0x7FFFFFFFull - 10}) {
    for (uint64_t cycles = around < 15 ? 0 : around - 15; cycles < around + 15; ++cycles) {
      if (cycles <= tvb::kMaxCycles) {
        EXPECT_EQ(Clocks(RunTestBody(0, cycles, true), 1000000), cycles);
      }
    }
  }
  for (uint64_t cycles = 0; cycles < 70000; cycles += 7) {
    EXPECT_EQ(Clocks(RunTestBody(0, cycles, false), 1), cycles);
  }
}

TEST(TvbRunTest, ManyCyclesTakeTwoFields) {
  EXPECT_EQ(RunTestBody(0, tvb::kMaxCycles, true),
            Buffer({1, 20, 0xFF, 0xFF, 0xFF, 0xFF, 0x07, 20, 0x94, 0x80, 0x04, 23}));
}

TEST(TvbRunTest, TimesAreMicrosecondsOrMilliseconds) {
  EXPECT_EQ(RunTestBody(1, 0, true), Buffer({1, 24, 11, 23}));
  EXPECT_EQ(RunTestBody(1000, 0, true), Buffer({1, 24, 0xF2, 0x07, 23}));
  EXPECT_EQ(RunTestBody(32768, 0, true), Buffer({1, 24, 0x8A, 0x80, 0x02, 23}));
  EXPECT_EQ(RunTestBody(33000, 0, false), Buffer({1, 24, 0xAB, 0x80, 0x02, 23}));
  EXPECT_EQ(RunTestBody(32769, 0, true), Buffer({1, 24, 0xAA, 0x80, 0x02, 24, 0x8B, 0x06, 23}));
  EXPECT_EQ(RunTestBody(32769, 0, false),
            Buffer({1, 24, 0xAA, 0x80, 0x02, 24, 0x8B, 0x06, 20, 11, 23}));
}

TEST(TvbRunTest, ATimeIsNeverCutShort) {
  for (uint64_t hz : kRates) {
    for (uint64_t time : kTimes) {
      uint64_t whole = hz * time / 1000000;
      uint64_t clocks = Clocks(RunTestBody(time, 0, false), hz);
      EXPECT_GE(clocks, whole) << time << " us at " << hz;
      EXPECT_LE(clocks, whole + 1) << time << " us at " << hz;
    }
  }
}

TEST(TvbRunTest, ATimeIsExactAtWholeKilohertz) {
  for (uint64_t hz : kRates) {
    for (uint64_t time : kTimes) {
      if (hz % 1000 == 0) {
        EXPECT_EQ(Clocks(RunTestBody(time, 0, true), hz), hz * time / 1000000) << time << " " << hz;
      }
    }
  }
}

TEST(TvbRunTest, TheForecastOfClocksIsThatOfTheFields) {
  for (uint32_t hz : kRates) {
    for (uint64_t time : kTimes) {
      for (uint64_t cycles : {0, 7, 40000}) {
        for (bool whole : {false, true}) {
          EXPECT_EQ(tvb::RunTestClocks(time, cycles, whole, hz),
                    Clocks(RunTestBody(time, cycles, whole), hz));
        }
      }
    }
  }
}

TEST(TvbRunTest, TheLimitsAreKept) {
  EXPECT_THROW(RunTestBody(0, tvb::kMaxCycles + 1, true), tvb::Error);
  EXPECT_THROW(RunTestBody(32769, tvb::kMaxCycles, false), tvb::Error);
  EXPECT_THROW(RunTestBody(tvb::kMaxTime + 1, 0, true), tvb::Error);
  EXPECT_EQ(Clocks(RunTestBody(tvb::kMaxTime, 0, true), 1000), tvb::kMaxTime / 1000);
}

}  // namespace
