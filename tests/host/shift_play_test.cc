// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Playback: which line is driven in which period, and to what level.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;

class ShiftPlayTest : public EngineTest {
 protected:
  static void Load(const Bytes &characters) {
    Quorlan_MemSet(static_cast<uint32_t>(characters.size()));
    std::copy(characters.begin(), characters.end(), g_vector);
    g_vector[characters.size()] = 0;
  }
  // The calls of a playback of these characters without a mask.
  std::string Play(const Bytes &characters, uint32_t start, uint32_t end) {
    Load(characters);
    pins.ClearEvents();
    Quorlan_Transfer(nullptr, start, end);
    return pins.Text();
  }
};

TEST_F(ShiftPlayTest, InstructionExample) {
  const uint8_t tdi = 0x60;
  Quorlan_SvfShiftInsRegister(8, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), Periods({{2, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I0 M0 K1"},
                                  {2, "K0 I1 K1"},
                                  {4, "K0 I0 K1"},
                                  {1, "K0 I0 M1 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftPlayTest, InstructionWithTrailerExample) {
  const uint8_t tdi = 0x60, tir = 0xFF;
  g_tir_len = 8;
  Quorlan_GenHeadAndTrailerVec(10, 8, &tir);
  Quorlan_SvfShiftInsRegister(8, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), Periods({{2, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I0 M0 K1"},
                                  {2, "K0 I1 K1"},
                                  {4, "K0 I0 K1"},
                                  {1, "K0 I0 M0 K1"},
                                  {7, "K0 M0 K1"},
                                  {2, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftPlayTest, HeaderDrivesTmsAndNotTdi) {
  const uint8_t tdi = 0xC0, hdr = 0xFF;
  g_hdr_len = 3;
  Quorlan_GenHeadAndTrailerVec(11, 3, &hdr);
  Quorlan_SvfShiftDataRegister(2, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), Periods({{1, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {3, "K0 M0 K1"},
                                  {1, "K0 I1 M0 K1"},
                                  {1, "K0 I1 M1 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftPlayTest, DataWithHeaderAndTrailer) {
  const uint8_t tdi = 0xA0, hdr = 0x80, tdr = 0x00;
  g_hdr_len = 1;
  Quorlan_GenHeadAndTrailerVec(11, 1, &hdr);
  g_tdr_len = 2;
  Quorlan_GenHeadAndTrailerVec(9, 2, &tdr);
  Quorlan_SvfShiftDataRegister(4, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), Periods({{1, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 M0 K1"},
                                  {1, "K0 I1 M0 K1"},
                                  {1, "K0 I0 K1"},
                                  {1, "K0 I1 K1"},
                                  {1, "K0 I0 M0 K1"},
                                  {1, "K0 M0 K1"},
                                  {2, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftPlayTest, OneBit) {
  const uint8_t tdi = 0x80;
  Quorlan_SvfShiftDataRegister(1, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I1 M1 K1 K0 M1 K1 K0 M0 K1");
}

TEST_F(ShiftPlayTest, NoBits) {
  Quorlan_SvfShiftDataRegister(0, nullptr, nullptr, nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 2A 08");
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 M1 K1 K0 M0 K1");
}

TEST_F(ShiftPlayTest, TmsInsideTheRangeKeepsItsLevel) {
  // TMS is high in every character, but inside the range only its ends are looked at.
  EXPECT_EQ(Play({0x08, 0x08, 0x2A, 0x2A, 0x2A, 0x08, 0x2A}, 1, 6),
            "K0 M0 K1 K0 I0 M0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I0 M0 K1 K0 M1 K1");
}

TEST_F(ShiftPlayTest, TdiOutsideTheRangeKeepsItsLevel) {
  EXPECT_EQ(Play({0x4C, 0x08, 0x4C, 0x08, 0x4C}, 1, 4),
            "K0 M0 K1 K0 I0 M0 K1 K0 I1 K1 K0 I0 M0 K1 K0 M0 K1");
}

TEST_F(ShiftPlayTest, EmptyRangeAtTheStart) {
  // end - 1 is 0xFFFFFFFF, so TMS is driven at the first index alone.
  EXPECT_EQ(Play({0x2A, 0x2A, 0x08}, 0, 0), "K0 M1 K1 K0 K1 K0 K1");
}

TEST_F(ShiftPlayTest, RangeThatEndsBeforeItStarts) {
  EXPECT_EQ(Play({0x2A, 0x08, 0x2A, 0x08, 0x2A}, 3, 1),
            "K0 M1 K1 K0 M0 K1 K0 M1 K1 K0 M0 K1 K0 M1 K1");
}

TEST_F(ShiftPlayTest, RangeOfOne) {
  EXPECT_EQ(Play({0x08, 0x6E, 0x08}, 1, 2), "K0 M0 K1 K0 I1 M1 K1 K0 M0 K1");
}

TEST_F(ShiftPlayTest, RangeBehindTheVector) {
  EXPECT_EQ(Play({0x4C, 0x6E, 0x4C}, 5, 9), "K0 M0 K1 K0 M1 K1 K0 M0 K1");
}

TEST_F(ShiftPlayTest, RangeThatReachesPastTheVector) {
  EXPECT_EQ(Play({0x4C, 0x6E, 0x4C}, 1, 0xFFFFFFFF), "K0 M0 K1 K0 I1 M1 K1 K0 I1 K1");
}

TEST_F(ShiftPlayTest, TckComesFromTheCharacters) {
  // Characters that no builder makes: TCK high in the first half, low in the second.
  EXPECT_EQ(Play({0x80, 0x88, 0x00 + 0x40}, 0, 3), "K1 I0 M0 K0 K1 I0 K1 K0 I1 M0 K0");
}

TEST_F(ShiftPlayTest, TheLow3BitsAreNotRead) {
  EXPECT_EQ(Play({0x0F, 0x68, 0x6F}, 0, 3), "K0 I0 M0 K1 K0 I1 K1 K0 I1 M1 K1");
}

TEST_F(ShiftPlayTest, NothingIsPlayedWithoutAVector) {
  Quorlan_Transfer(nullptr, 0, 5);
  EXPECT_EQ(pins.Text(), "");
  Quorlan_MemSet(10);
  const uint8_t mask = 0xFF;
  Quorlan_Transfer(&mask, 0, 5);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftPlayTest, NothingIsPlayedWhenTheRunIsStopped) {
  for (const uint32_t status : {0u, 2u, 0x101u, 0xFFFFFFFFu}) {
    g_status = status;
    EXPECT_EQ(Play({0x2A, 0x08}, 0, 2), "");
    EXPECT_EQ(g_status, status);
  }
}

TEST_F(ShiftPlayTest, StopsAfterThePeriodInWhichTheRunWasStopped) {
  int rises = 0;
  pins.OnWrite([&](shim::Line line, bool level) {
    if (line == shim::kTck && level && ++rises == 2) {
      g_status = 0;
    }
  });
  EXPECT_EQ(Play({0x2A, 0x08, 0x2A, 0x08}, 0, 4), "K0 I0 M1 K1 K0 I0 K1");
}

TEST_F(ShiftPlayTest, FinishesThePeriodInWhichTheRunWasStopped) {
  pins.OnWrite([&](shim::Line line, bool) {
    if (line == shim::kTdi) {
      g_status = 7;
    }
  });
  EXPECT_EQ(Play({0x2A, 0x08}, 0, 2), "K0 I0 M1 K1");
  EXPECT_EQ(g_status, 7u);
}

TEST_F(ShiftPlayTest, LeavesTheVectorAsItIs) {
  Play({0x2A, 0x08}, 0, 2);
  EXPECT_EQ(VectorText(), "2A 08");
}

TEST_F(ShiftPlayTest, AllocatesAndReportsNothing) {
  Load({0x2A, 0x08});
  const size_t before = shim::Allocations().size();
  Quorlan_Transfer(nullptr, 0, 2);
  EXPECT_EQ(shim::Allocations().size(), before);
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(shim::SchedClockReadings(), 0u);
  EXPECT_EQ(shim::DelayCount(), 0u);
}

}  // namespace
