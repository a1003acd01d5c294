// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Shifts at the edges of memory: buffers that must grow or cannot be had, sums of lengths that pass
// 32 bits, and register lengths that have outlived their vectors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

constexpr uint32_t kMaxBlock = 4 << 20;  // the largest block in bytes

class ShiftMemoryTest : public EngineTest {
 protected:
  // Every shift of `bits` zeros is abandoned: no pin is touched, and the run is stopped.
  void ExpectAbandoned(uint32_t bits) {
    for (int kind = 0; kind < 3; ++kind) {
      g_status = 1;
      if (kind == 0) {
        Quorlan_SvfShiftInsRegister(bits, nullptr, nullptr, nullptr);
      } else if (kind == 1) {
        Quorlan_SvfShiftDataRegister(bits, nullptr, nullptr, nullptr);
      } else {
        EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(bits, nullptr, nullptr, nullptr), nullptr);
      }
      EXPECT_EQ(g_status, 0u) << bits << " bits, kind " << kind;
      EXPECT_EQ(pins.writes(), 0u);
    }
  }
};

TEST_F(ShiftMemoryTest, AShiftLongerThanTheBufferGrowsIt) {
  Quorlan_Reset();
  pins.Record(false);
  const uint64_t before = pins.writes();
  Quorlan_SvfShiftDataRegister(10000, nullptr, nullptr, nullptr);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 10006}));
  EXPECT_EQ(g_vector_size, 10005u);
  EXPECT_EQ(String(g_vector).size(), 10005u);
  // Two TCK a period, TDI in the range, TMS in the walk, at both ends of the range and behind it.
  EXPECT_EQ(pins.writes() - before, 2u * 10005 + 10000 + 3 + 2 + 2);
}

TEST_F(ShiftMemoryTest, TheNextResetTakesTheLargestShift) {
  Quorlan_Reset();
  pins.Record(false);
  Quorlan_SvfShiftInsRegister(4000, nullptr, nullptr, nullptr);
  Quorlan_SvfShiftInsRegister(3500, nullptr, nullptr, nullptr);
  Quorlan_Reset();
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 4007, 4006}));
}

TEST_F(ShiftMemoryTest, WithoutMemoryToGrowNothingIsPlayed) {
  Quorlan_Reset();
  pins.ClearEvents();
  shim::FailAllocation(1);
  Quorlan_SvfShiftDataRegister(4000, nullptr, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftMemoryTest, WithoutABufferNothingIsPlayed) {
  shim::FailAllocation(1);
  Quorlan_SvfShiftInsRegister(8, nullptr, nullptr, nullptr);
  EXPECT_EQ(shim::Messages(),
            (Messages{shim::Printk("Error: malloc/realloc failed, size 3200\n")}));
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftMemoryTest, AfterAFailureTheNextShiftIsPlayed) {
  shim::FailAllocation(1);
  Quorlan_SvfShiftDataRegister(1, nullptr, nullptr, nullptr);
  g_status = 1;
  Quorlan_SvfShiftDataRegister(1, nullptr, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I0 M1 K1 K0 M1 K1 K0 M0 K1");
}

TEST_F(ShiftMemoryTest, TheLongestShift) {
  pins.Record(false);
  const uint32_t bits = kMaxBlock - 1 - 5;
  Quorlan_SvfShiftDataRegister(bits, nullptr, nullptr, nullptr);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(pins.writes(), 3ull * bits + 10 + 7);
  EXPECT_EQ(shim::SizeOf(g_vector), kMaxBlock);
}

TEST_F(ShiftMemoryTest, ShiftsThatNoBlockHoldsAreAbandoned) {
  for (const uint32_t bits : {kMaxBlock - 5, kMaxBlock, 0x7FFFFFFFu, 0x80000000u}) {
    ExpectAbandoned(bits);
  }
}

TEST_F(ShiftMemoryTest, TheyAreAbandonedWithABufferToo) {
  Quorlan_MemSet(100);
  for (const uint32_t bits : {kMaxBlock - 5, 0x80000000u}) {
    ExpectAbandoned(bits);
  }
}

TEST_F(ShiftMemoryTest, LengthsAreSummedBeyond32Bits) {
  for (const uint32_t bits : {0xFFFFFFFFu, 0xFFFFFFFCu, 0xFFFFFFFAu}) {
    ExpectAbandoned(bits);
  }
}

// In these a length has lost its vector: the shift has no padding, but its range is still moved.
// Lengths are summed in 32 bits.

TEST_F(ShiftMemoryTest, TrailerLengthAloneMayPass32Bits) {
  g_tir_len = g_tdr_len = 0xFFFFFFF8;
  Quorlan_SvfShiftInsRegister(8, nullptr, nullptr, nullptr);
  EXPECT_EQ(VectorText(), "2A 2A 08 08 08 08 08 08 08 08 08 2A 2A 08");
  EXPECT_EQ(pins.writes(), 28u + 10 + 5);
  Quorlan_SvfShiftDataRegister(8, nullptr, nullptr, nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 08 08 08 08 08 08 08 2A 2A 08");
  EXPECT_EQ(pins.writes(), 43u + 26 + 10 + 4);
  EXPECT_EQ(g_vector_size, 3200u);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftMemoryTest, HeaderAndTrailerLengthsAloneMayPass32Bits) {
  g_hir_len = g_hdr_len = 0x80000000;
  g_tir_len = g_tdr_len = 0x80000000;
  Quorlan_SvfShiftInsRegister(8, nullptr, nullptr, nullptr);
  EXPECT_EQ(pins.writes(), 28u + 14);
  Quorlan_SvfShiftDataRegister(8, nullptr, nullptr, nullptr);
  EXPECT_EQ(pins.writes(), 42u + 26 + 13);
  EXPECT_EQ(g_vector_size, 3200u);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftMemoryTest, HeaderLengthAloneMovesTheStart) {
  const uint8_t tdi = 0xF0;
  g_hdr_len = 2;
  Quorlan_SvfShiftDataRegister(4, &tdi, nullptr, nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 4C 4C 4C 6E 2A 08");
  EXPECT_EQ(pins.Text(), Periods({{1, "K0 M1 K1"},
                                  {4, "K0 M0 K1"},
                                  {1, "K0 I1 M0 K1"},
                                  {1, "K0 I1 M1 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftMemoryTest, HeaderLengthPastTheDataLeavesNoRange) {
  const uint8_t tdi = 0xF0;
  g_hdr_len = 5;
  g_vector_size = 1;
  Quorlan_SvfShiftDataRegister(4, &tdi, nullptr, nullptr);
  EXPECT_EQ(g_vector_size, 14u);
  EXPECT_EQ(pins.Text(),
            Periods({{1, "K0 M1 K1"}, {5, "K0 M0 K1"}, {2, "K0 M1 K1"}, {1, "K0 M0 K1"}}));
}

TEST_F(ShiftMemoryTest, TrailerLengthAloneShortensTheRange) {
  const uint8_t tdi = 0xFF, mask = 0xFF;
  g_tdr_len = 3;
  Quorlan_SvfShiftDataRegister(8, &tdi, nullptr, &mask);
  EXPECT_EQ(VectorText(), "2A 08 08 4C 4C 4C 4C 4C 4C 4C 6E 2A 08");
  EXPECT_EQ(pins.Text(), Periods({{1, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I1 M0 R0 K1"},
                                  {3, "K0 I1 R0 K1"},
                                  {1, "K0 I1 M0 R0 K1"},
                                  {2, "K0 M0 K1"},
                                  {2, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftMemoryTest, TrailerLengthPastTheVectorWrapsTheEnd) {
  const uint8_t tdi = 0xC0;
  g_tdr_len = 20;
  Quorlan_SvfShiftDataRegister(2, &tdi, nullptr, nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 4C 6E 2A 08");
  EXPECT_EQ(pins.Text(), Periods({{1, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I1 M0 K1"},
                                  {1, "K0 I1 K1"},
                                  {2, "K0 I0 K1"}}));
}

TEST_F(ShiftMemoryTest, InstructionLengthsDoTheSame) {
  const uint8_t tdi = 0xC0;
  g_tir_len = 1;
  Quorlan_SvfShiftInsRegister(2, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), Periods({{2, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I1 M0 K1"},
                                  {2, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
  pins.ClearEvents();
  g_tir_len = 0;
  g_hir_len = 1;
  Quorlan_SvfShiftInsRegister(2, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), Periods({{2, "K0 M1 K1"},
                                  {3, "K0 M0 K1"},
                                  {1, "K0 I1 M1 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(ShiftMemoryTest, OutlivedLengthsDoNotMixKinds) {
  const uint8_t tdi = 0xC0;
  g_hdr_len = 9;
  g_tdr_len = 9;
  Quorlan_SvfShiftInsRegister(1, &tdi, nullptr, nullptr);
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I1 M1 K1 K0 M1 K1 K0 M0 K1");
}

TEST_F(ShiftMemoryTest, CapturesFollowTheRange) {
  const uint8_t mask = 0xFF;
  g_tdr_len = 3;
  uint8_t *captured = Quorlan_SvfShiftDataRegisterAndReadTDO(8, nullptr, nullptr, &mask);
  EXPECT_EQ(String(captured), "00000");
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 6, 6}));
  kfree(captured);
}

TEST_F(ShiftMemoryTest, ACaptureOfNoRoomIsPlayedAndOneOfTooMuchIsNot) {
  const uint8_t mask = 0xFF;
  g_hdr_len = 5;
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(4, nullptr, nullptr, &mask), nullptr);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 0}));
  EXPECT_EQ(pins.writes(), 9u * 3);
  g_hdr_len = 6;
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(4, nullptr, nullptr, &mask), nullptr);
  EXPECT_EQ(pins.writes(), 9u * 3);
  EXPECT_EQ(shim::Allocations().size(), 2u);
  EXPECT_EQ(g_status, 1u);
}

}  // namespace
