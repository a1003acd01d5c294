// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The four line primitives: which callback with which line's number, for which level.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

// What the callbacks below were called with: "high 5".
std::vector<std::string> calls;
int read_result;

int DriveHigh(uint32_t gpio) {
  calls.push_back("high " + std::to_string(gpio));
  return 0;
}

int DriveLow(uint32_t gpio) {
  calls.push_back("low " + std::to_string(gpio));
  return 0;
}

int Read(uint32_t gpio) {
  calls.push_back("read " + std::to_string(gpio));
  return read_result;
}

int OtherHigh(uint32_t gpio) {
  calls.push_back("other high " + std::to_string(gpio));
  return 0;
}

int Unused(uint32_t gpio) {
  calls.push_back("unused " + std::to_string(gpio));
  return 0;
}

using Slot = int (*)(uint32_t);
using Calls = std::vector<std::string>;

class PinsLinesTest : public shim::Test {
 protected:
  PinsLinesTest() {
    calls.clear();
    read_result = 0;
    const uint32_t numbers[] = {5, 6, 7, 8};
    std::memset(config, 0xEE, sizeof(config));
    std::memcpy(config + 24, numbers, sizeof(numbers));
    Select(config, operations);
  }

  static void Select(const void *record, const Slot *table) {
    g_tvb_cpld_cfg = static_cast<const pin_config *>(record);
    g_tvb_jtag_funcs = reinterpret_cast<const pin_operations *>(table);
  }

  alignas(8) uint8_t config[40];
  Slot operations[8] = {Unused, Unused, DriveHigh, DriveLow, Read, Unused, Unused, Unused};
};

TEST_F(PinsLinesTest, EachLineHasItsNumber) {
  TDI_Wr(1);
  TMS_Wr(0);
  EXPECT_EQ(TDO_Rd(), 0);
  TCK_Wr(1);
  EXPECT_EQ(calls, (Calls{"high 5", "low 6", "read 7", "high 8"}));
}

TEST_F(PinsLinesTest, EachLineAtBothLevels) {
  TDI_Wr(0);
  TMS_Wr(1);
  TCK_Wr(0);
  EXPECT_EQ(calls, (Calls{"low 5", "high 6", "low 8"}));
}

TEST_F(PinsLinesTest, AnyLevelButZeroIsHigh) {
  for (int level = 1; level < 256; ++level) {
    calls.clear();
    TCK_Wr(static_cast<uint8_t>(level));
    TMS_Wr(static_cast<uint8_t>(level));
    TDI_Wr(static_cast<uint8_t>(level));
    ASSERT_EQ(calls, (Calls{"high 8", "high 6", "high 5"})) << level;
  }
}

TEST_F(PinsLinesTest, OneEdgeIsTwoCalls) {
  TCK_Wr(0);
  TCK_Wr(1);
  EXPECT_EQ(calls, (Calls{"low 8", "high 8"}));
}

TEST_F(PinsLinesTest, EqualLevelsAreWrittenAgain) {
  TCK_Wr(1);
  TCK_Wr(1);
  TMS_Wr(0);
  TMS_Wr(0);
  TDI_Wr(1);
  TDI_Wr(1);
  EXPECT_EQ(calls, (Calls{"high 8", "high 8", "low 6", "low 6", "high 5", "high 5"}));
}

TEST_F(PinsLinesTest, ReadGivesTheLow8BitsUnchanged) {
  const struct {
    int result;
    int level;
  } reads[] = {{0, 0},     {1, 1},        {2, 2},     {0x80, 0x80}, {0xFF, 0xFF},
               {0x100, 0}, {0x1FF, 0xFF}, {-1, 0xFF}, {-256, 0}};
  for (const auto &read : reads) {
    read_result = read.result;
    EXPECT_EQ(TDO_Rd(), read.level) << read.result;
  }
}

TEST_F(PinsLinesTest, NumbersAreWholeWords) {
  const uint32_t numbers[] = {0xFFFFFFFE, 0x80000006, 0x00010007, 0x12345678};
  std::memcpy(config + 24, numbers, sizeof(numbers));
  TDI_Wr(1);
  TMS_Wr(1);
  TDO_Rd();
  TCK_Wr(0);
  EXPECT_EQ(calls, (Calls{"high 4294967294", "high 2147483654", "read 65543", "low 305419896"}));
}

TEST_F(PinsLinesTest, NothingIsCached) {
  TCK_Wr(1);
  alignas(8) uint8_t other[40] = {};
  const uint32_t numbers[] = {25, 26, 27, 28};
  std::memcpy(other + 24, numbers, sizeof(numbers));
  Slot table[8] = {nullptr, nullptr, OtherHigh, DriveLow, Read, nullptr, nullptr, nullptr};
  Select(other, table);
  TCK_Wr(1);
  TMS_Wr(0);
  TDO_Rd();
  table[2] = DriveHigh;
  TDI_Wr(1);
  std::memcpy(other + 24, numbers + 1, sizeof(numbers[0]));
  TDI_Wr(1);
  EXPECT_EQ(calls, (Calls{"high 8", "other high 28", "low 26", "read 27", "high 25", "high 26"}));
}

TEST_F(PinsLinesTest, NothingElseHappens) {
  TCK_Wr(1);
  TDO_Rd();
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_TRUE(shim::Allocations().empty());
  EXPECT_EQ(shim::SchedClockReadings(), 0u);
  EXPECT_EQ(shim::DelayCount(), 0u);
}

TEST_F(PinsLinesTest, RecordsHaveTheFrameworksLayout) {
  EXPECT_EQ(offsetof(pin_config, tdi), 24u);
  EXPECT_EQ(offsetof(pin_config, tms), 28u);
  EXPECT_EQ(offsetof(pin_config, tdo), 32u);
  EXPECT_EQ(offsetof(pin_config, tck), 36u);
  EXPECT_EQ(offsetof(pin_operations, drive_high), 16u);
  EXPECT_EQ(offsetof(pin_operations, drive_low), 24u);
  EXPECT_EQ(offsetof(pin_operations, read), 32u);
}

}  // namespace
