// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The IO status: read, and printed against a reference.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

const char kNoIo[] = "Error: NO IO is found\n";
const char kTitle[] = "IO Status: \n";
const char kNoIoStatus[] = "Error: Cannot Read CHIP IO Status\n";

class DeviceIoStatusTest : public EngineTest {
 protected:
  DeviceIoStatusTest() {
    Quorlan_MemSet(0);
  }
  // What TDO reads, one character a read, then 0.
  void Reads(const std::string &levels) {
    pins.OnRead([levels, next = size_t{0}]() mutable {
      return next < levels.size() ? levels[next++] - '0' : 0;
    });
  }
  static Messages Printks(const std::vector<std::string> &texts) {
    Messages messages;
    for (const std::string &text : texts) {
      messages.push_back(shim::Printk(text));
    }
    return messages;
  }
  // What the printout of these strings writes.
  static Messages Print(uint32_t length, const char *status, const char *watch) {
    g_io_len = length;
    g_chip_io_status = status == nullptr ? nullptr : shim::NewString(status);
    g_watch_ios = watch == nullptr ? nullptr : shim::NewString(watch);
    Quorlan_PrintIOStatus();
    return shim::Messages();
  }
};

TEST_F(DeviceIoStatusTest, WithoutALengthNothingIsRead) {
  Quorlan_ReadIOStatus(1, 1);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(g_chip_io_status, nullptr);
}

TEST_F(DeviceIoStatusTest, WithoutALengthTheEarlierStatusStays) {
  uint8_t *const old = shim::NewString("01");
  g_chip_io_status = old;
  Quorlan_ReadIOStatus(1, 1);
  EXPECT_EQ(g_chip_io_status, old);
}

TEST_F(DeviceIoStatusTest, ReadsThroughInstructionFive) {
  g_io_len = 3;
  Reads("110");
  Quorlan_ReadIOStatus(1, 1);
  EXPECT_EQ(pins.Text(), Periods({{2, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I1 M0 K1"},
                                  {1, "K0 I0 K1"},
                                  {1, "K0 I1 K1"},
                                  {4, "K0 I0 K1"},
                                  {1, "K0 I0 M1 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"},
                                  {1, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I1 M0 R1 K1"},
                                  {1, "K0 I1 R1 K1"},
                                  {1, "K0 I1 M1 R0 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
  EXPECT_EQ(String(g_chip_io_status), "011");
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(DeviceIoStatusTest, ReadsTheAddressedDevice) {
  g_io_len = 5;
  Quorlan_ReadIOStatus(1, 3);
  EXPECT_EQ(VectorText(), "2A 08 08 4C 4C 4C 4C 4C 4C 6E 2A 08");
  EXPECT_EQ(pins.reads(), 5u);
}

TEST_F(DeviceIoStatusTest, StoppedRunCannotRead) {
  g_io_len = 3;
  g_chip_io_status = shim::NewString("01");
  g_status = 0;
  Quorlan_ReadIOStatus(1, 1);
  EXPECT_EQ(shim::Messages(), Printks({kNoIoStatus}));
  EXPECT_EQ(g_chip_io_status, nullptr);
}

TEST_F(DeviceIoStatusTest, WrongSizeIsReportedAndKept) {
  g_io_len = 10;
  g_tdr_len = 2;  // has outlived its vector: the range is two bits short
  Quorlan_ReadIOStatus(1, 1);
  EXPECT_EQ(shim::Messages(),
            Printks({"Error: Read Chip IO Status failed, size mismatch, current size is 8\n"}));
  EXPECT_EQ(String(g_chip_io_status), "00000000");
}

TEST_F(DeviceIoStatusTest, WithoutMemoryItIsReported) {
  g_io_len = 3;
  for (const uint64_t n : {2, 3, 4, 5, 6}) {
    shim::ClearMessages();
    shim::FailAllocation(n);
    Quorlan_ReadIOStatus(1, 1);
    EXPECT_EQ(shim::Messages(), Printks({kNoIoStatus})) << n;
    EXPECT_EQ(shim::LiveRequests(), 1u) << n;
  }
}

TEST_F(DeviceIoStatusTest, LengthsThatNoBlockHoldsAreReported) {
  g_io_len = 0xFFFFFFFF;
  Quorlan_ReadIOStatus(1, 1);
  EXPECT_EQ(shim::Messages(), Printks({kNoIoStatus}));
  EXPECT_EQ(pins.reads(), 0u);
}

TEST_F(DeviceIoStatusTest, PrintsTheTitleWithoutALength) {
  EXPECT_EQ(Print(0, "01", "01"), Printks({kTitle}));
}

TEST_F(DeviceIoStatusTest, ReportsMissingStringsAndPrintsTheTitle) {
  EXPECT_EQ(Print(0, nullptr, nullptr), Printks({kNoIo, kTitle}));
  shim::ClearMessages();
  EXPECT_EQ(Print(0, "01", nullptr), Printks({kNoIo, kTitle}));
  shim::ClearMessages();
  EXPECT_EQ(Print(0, nullptr, "01"), Printks({kNoIo, kTitle}));
}

TEST_F(DeviceIoStatusTest, StopsBehindTheTitleWhenAStringIsMissing) {
  EXPECT_EQ(Print(2, nullptr, nullptr), Printks({kNoIo, kTitle}));
  shim::ClearMessages();
  EXPECT_EQ(Print(2, "01", nullptr), Printks({kNoIo, kTitle}));
  shim::ClearMessages();
  EXPECT_EQ(Print(2, nullptr, "01"), Printks({kNoIo, kTitle}));
}

TEST_F(DeviceIoStatusTest, PrintsARowForEachWatchedIo) {
  EXPECT_EQ(Print(4, "0110", "01x1"),
            Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
                     "       0\t\t0\t\t0\t\t", "true\n", "       1\t\t1\t\t1\t\t", "true\n",
                     "       3\t\t1\t\t0\t\t", "false\n"}));
}

TEST_F(DeviceIoStatusTest, ReadsTheStatusFromItsEnd) {
  EXPECT_EQ(Print(3, "100", "001"),
            Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
                     "       0\t\t0\t\t0\t\t", "true\n", "       1\t\t0\t\t0\t\t", "true\n",
                     "       2\t\t1\t\t1\t\t", "true\n"}));
}

TEST_F(DeviceIoStatusTest, TitlesTheTableBeforeItsFirstRowOnly) {
  EXPECT_EQ(Print(3, "000", "xx0"),
            Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
                     "       2\t\t0\t\t0\t\t", "true\n"}));
}

TEST_F(DeviceIoStatusTest, NothingWatchedHasNoTable) {
  EXPECT_EQ(Print(4, "0110", "xxxx"), Printks({kTitle}));
}

TEST_F(DeviceIoStatusTest, OnlyALowerCaseXIsNotWatched) {
  EXPECT_EQ(Print(1, "0", "X"),
            Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
                     "       0\t\tX\t\t0\t\t", "false\n"}));
}

TEST_F(DeviceIoStatusTest, LengthIsReadAgainForEachRow) {
  shim::OnMessage([](const shim::Message &message) {
    if (message.text == "true\n") {
      g_io_len = 1;
    }
  });
  EXPECT_EQ(Print(3, "000", "000").size(), 5u);
}

TEST_F(DeviceIoStatusTest, AStringOneShortHasARowForItsTerminator) {
  const std::string nul(1, '\0');
  // IO 2 lies behind the reference's end; IO 0 is read behind the status's.
  EXPECT_EQ(Print(3, "001", "10"),
            Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
                     "       0\t\t1\t\t1\t\t", "true\n", "       1\t\t0\t\t0\t\t", "true\n",
                     "       2\t\t" + nul + "\t\t0\t\t", "false\n"}));
  shim::ClearMessages();
  EXPECT_EQ(
      Print(3, "01", "1x0"),
      Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
               "       0\t\t1\t\t" + nul + "\t\t", "false\n", "       2\t\t0\t\t0\t\t", "true\n"}));
}

TEST_F(DeviceIoStatusTest, BothTerminatorsAgree) {
  const std::string nul(1, '\0');
  EXPECT_EQ(Print(1, "", ""),
            Printks({kTitle, "\nIO Status: \n", "Bs order\t\tRef\t\tRead\t\tVerify\n",
                     "       0\t\t" + nul + "\t\t" + nul + "\t\t", "true\n"}));
}

TEST_F(DeviceIoStatusTest, WhatLiesBeyondATerminatorHasNoRow) {
  EXPECT_EQ(Print(4, "0000", "0").size(), 3u + 2 * 2);
  shim::ClearMessages();
  EXPECT_EQ(Print(4, "0", "0000").size(), 3u + 2 * 2);
}

TEST_F(DeviceIoStatusTest, ShortStringsAreNotReadPastTheirEnd) {
  Print(100, "01", "0");
  shim::ClearMessages();
  Print(0xFFFFFFFF, "01", "0x1");
  for (const shim::Message &message : shim::Messages()) {
    EXPECT_EQ(message.channel, shim::Channel::kPrintk);
  }
  EXPECT_LT(shim::Messages().size(), 20u);
}

}  // namespace
