// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Capture: playback that returns what TDO read.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;

class ShiftCaptureTest : public EngineTest {
 protected:
  // The string captured by a data shift of zeros, or "null".
  static std::string Capture(uint32_t bits, const Bytes &mask, const Bytes &tdo = {}) {
    const Bytes tdi((bits + 7) / 8 + 1, 0);
    return Text(Quorlan_SvfShiftDataRegisterAndReadTDO(bits, tdi.data(),
                                                       tdo.empty() ? nullptr : tdo.data(),
                                                       mask.empty() ? nullptr : mask.data()));
  }
  // Takes the string over.
  static std::string Text(uint8_t *captured) {
    if (captured == nullptr) {
      return "null";
    }
    const std::string text = String(captured);
    kfree(captured);
    return text;
  }
  // TDO reads these characters' distance from '0', then 0.
  void Reads(const std::string &levels) {
    pins.OnRead([levels, next = size_t{0}]() mutable {
      return next < levels.size() ? levels[next++] - '0' : 0;
    });
  }
};

TEST_F(ShiftCaptureTest, LastBitReadComesFirst) {
  Reads("1101");
  EXPECT_EQ(Capture(4, {0xF0}), "1011");
  EXPECT_EQ(pins.Text(),
            "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I0 M0 R1 K1 K0 I0 R1 K1 K0 I0 R0 K1 K0 I0 M1 R1 K1 "
            "K0 M1 K1 K0 M0 K1");
}

TEST_F(ShiftCaptureTest, ThirtyTwoBits) {
  Reads("10101100001100101000000001010000");
  EXPECT_EQ(Capture(32, {0xFF, 0xFF, 0xFF, 0xFF}), "00001010000000010100110000110101");
}

TEST_F(ShiftCaptureTest, OnlyMaskedBits) {
  Reads("10");
  EXPECT_EQ(Capture(8, {0x41}), "01");
  EXPECT_EQ(pins.reads(), 2u);
}

TEST_F(ShiftCaptureTest, NothingIsCompared) {
  Reads("0101");
  EXPECT_EQ(Capture(4, {0xF0}, {0xA0}), "1010");
  EXPECT_EQ(g_status, 1u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(ShiftCaptureTest, CharactersAreZeroPlusTheReading) {
  Reads("2");
  EXPECT_EQ(Capture(1, {0x80}), "2");
  pins.OnRead([] { return 0x101; });
  EXPECT_EQ(Capture(1, {0x80}), "1");
  // 48 + 255 modulo 256.
  pins.OnRead([] { return -1; });
  EXPECT_EQ(Capture(1, {0x80}), "/");
}

TEST_F(ShiftCaptureTest, AReadingCanEndTheString) {
  // 48 + 208 modulo 256 is 0.
  std::vector<int> readings = {1, 208, 1};
  size_t next = 0;
  pins.OnRead([&] { return readings[next++]; });
  uint8_t *captured =
      Quorlan_SvfShiftDataRegisterAndReadTDO(3, nullptr, nullptr, Bytes{0xE0}.data());
  ASSERT_NE(captured, nullptr);
  EXPECT_EQ(captured[0], '1');
  EXPECT_EQ(captured[1], 0);
  EXPECT_EQ(captured[2], '1');
  EXPECT_EQ(captured[3], 0);
  EXPECT_EQ(shim::SizeOf(captured), 4u);
  kfree(captured);
}

TEST_F(ShiftCaptureTest, WithoutAMaskAllIsPlayedAndNothingCaptured) {
  EXPECT_EQ(Capture(2, {}), "null");
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I0 M0 K1 K0 I0 M1 K1 K0 M1 K1 K0 M0 K1");
  EXPECT_EQ(Capture(2, {0x00}), "null");
  EXPECT_EQ(pins.writes(), 46u);
  EXPECT_EQ(pins.reads(), 0u);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftCaptureTest, AllocatesTheRangeAndTheResult) {
  Reads("1101");
  Capture(20, {0x0F, 0x00, 0x00});
  const std::vector<size_t> sizes = {3201, 21, 5};
  EXPECT_EQ(RequestedSizes(), sizes);
  for (const shim::Allocation &allocation : shim::Allocations()) {
    EXPECT_EQ(allocation.flags, shim::kGfpKernel);
  }
  EXPECT_EQ(shim::LiveRequests(), 1u) << "the vector";
}

TEST_F(ShiftCaptureTest, WithoutMemoryForTheCaptureNothingIsPlayed) {
  Quorlan_MemSet(0);
  shim::FailAllocation(1);
  EXPECT_EQ(Capture(4, {0xF0}), "null");
  EXPECT_EQ(pins.Text(), "");
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(ShiftCaptureTest, WithoutMemoryForTheResultItIsNull) {
  Quorlan_MemSet(0);
  shim::FailAllocation(2);
  EXPECT_EQ(Capture(4, {0xF0}), "null");
  EXPECT_EQ(pins.reads(), 4u);
  EXPECT_EQ(shim::LiveRequests(), 1u) << "the vector";
}

TEST_F(ShiftCaptureTest, WithoutMemoryForTheVectorNothingIsPlayed) {
  shim::FailAllocation(1);
  EXPECT_EQ(Capture(4, {0xF0}), "null");
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftCaptureTest, StoppedRunTouchesNoPin) {
  for (const uint32_t status : {0u, 2u}) {
    g_status = status;
    EXPECT_EQ(Capture(4, {0xF0}), "null");
    EXPECT_EQ(pins.Text(), "");
    EXPECT_EQ(VectorText(), "2A 08 08 08 08 08 2A 2A 08") << "still built";
  }
}

TEST_F(ShiftCaptureTest, StopsBeforeThePeriodAfterTheRunWasStopped) {
  int rises = 0;
  pins.OnWrite([&](shim::Line line, bool level) {
    if (line == shim::kTck && level && ++rises == 4) {
      g_status = 0;
    }
  });
  EXPECT_EQ(Capture(4, {0xF0}), "null");
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I0 M0 R0 K1");
  EXPECT_EQ(shim::LiveRequests(), 1u) << "the capture is freed";
}

TEST_F(ShiftCaptureTest, ARunThatIsStoppedInTheLastPeriodKeepsItsCapture) {
  int rises = 0;
  pins.OnWrite([&](shim::Line line, bool level) {
    if (line == shim::kTck && level && ++rises == 9) {
      g_status = 0;
    }
  });
  EXPECT_EQ(Capture(4, {0xF0}), "0000");
}

TEST_F(ShiftCaptureTest, EmptyVectorPlaysNothing) {
  const uint8_t mask = 0xFF;
  Quorlan_MemSet(0);
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 0, 4)), "null");
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 5})) << "the capture comes first";
  Quorlan_FreeMemory();
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 0, 4)), "null");
  EXPECT_EQ(pins.Text(), "");
}

TEST_F(ShiftCaptureTest, EmptyCaptureIsNeverWrittenTo) {
  Quorlan_MemSet(0);
  Quorlan_GenVec();
  Quorlan_GenVec();
  const uint8_t mask = 0xFF;
  // end - start + 1 is 0.
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 1, 0)), "null");
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 0}));
  EXPECT_EQ(pins.Text(), "K0 M0 K1 K0 M0 K1");
  // end - start + 1 is 1.
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 1, 1)), "null");
}

TEST_F(ShiftCaptureTest, ACaptureWithoutRoomIsNeverWrittenTo) {
  Quorlan_MemSet(0);
  Quorlan_GenVec();
  Quorlan_GenVec();
  const uint8_t mask = 0xFF;
  // end - start + 1 is 0 in 32 bits, and yet every period lies in the range.
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 0, 0xFFFFFFFF)), "null");
  EXPECT_EQ(shim::LiveRequests(), 1u) << "the vector";
}

TEST_F(ShiftCaptureTest, RangesThatNoKernelHasRoomForPlayNothing) {
  Quorlan_MemSet(0);
  Quorlan_GenVec();
  const uint8_t mask = 0xFF;
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 2, 0)), "null");
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 0, 0xFFFFFFFE)), "null");
  EXPECT_EQ(Text(Quorlan_TransferAndReadTDO(&mask, 0, 4 << 20)), "null");
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(shim::Allocations().size(), 1u) << "and nothing is asked for";
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftCaptureTest, DrivesTheLinesLikeTheVerifyingPlayer) {
  const uint8_t tdi = 0x5A, hdr = 0x80, tdr = 0xE0;
  g_hdr_len = 2;
  Quorlan_GenHeadAndTrailerVec(11, 2, &hdr);
  g_tdr_len = 3;
  Quorlan_GenHeadAndTrailerVec(9, 3, &tdr);
  Quorlan_SvfShiftDataRegister(8, &tdi, nullptr, nullptr);
  const std::string verified = pins.Text();
  pins.ClearEvents();
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(8, &tdi, nullptr, nullptr), nullptr);
  EXPECT_EQ(pins.Text(), verified);
}

TEST_F(ShiftCaptureTest, SkipsThePadding) {
  const uint8_t ones = 0xFF;
  g_hdr_len = 2;
  Quorlan_GenHeadAndTrailerVec(11, 2, &ones);
  g_tdr_len = 3;
  Quorlan_GenHeadAndTrailerVec(9, 3, &ones);
  Reads("01");
  EXPECT_EQ(Capture(2, {0xFF}), "10");
  EXPECT_EQ(pins.reads(), 2u);
}

}  // namespace
