// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A SIR record as the IDCODE pre-scan reads it: Quorlan_ReadSirInfo.
#include "session.h"

namespace {

using image::Bytes;
using image::Join;
using image::Number;
using session::Messages;

class PrescanSir : public session::SessionTest {
 protected:
  // Reads a body; the counters start at values that must be replaced.
  s32 Read(const Bytes &body) {
    Load(body);
    first_ = second_ = 99;
    return Quorlan_ReadSirInfo(&first_, &second_);
  }

  // Reads raw TDI bytes of a whole number of instructions, closed by 23.
  s32 ReadTdi(const Bytes &tdi) {
    return Read(Join({Number(8 * tdi.size()), {15}, tdi, {23}}));
  }

  void ExpectCounters(u32 first, u32 second) {
    EXPECT_EQ(first_, first);
    EXPECT_EQ(second_, second);
  }

  u32 first_ = 0, second_ = 0;
};

TEST_F(PrescanSir, SingleInstruction) {
  EXPECT_EQ(ReadTdi({0x60}), 1);
  ExpectCounters(0, 0);
  EXPECT_EQ(g_idcode_pub, 6u);
  EXPECT_EQ(g_pos, 4u) << "behind the end tag";
  EXPECT_EQ(shim::LiveRequests(), 1u) << "the block stays allocated";
  AllowLeaks(1);
}

TEST_F(PrescanSir, BypassBytesFromTheLastOnAreTheSecondCount) {
  // From the last index down: FF FF, another, FF.
  EXPECT_EQ(ReadTdi({0xFF, 0x60, 0xFF, 0xFF}), 1);
  ExpectCounters(1, 2);
  AllowLeaks(1);
}

TEST_F(PrescanSir, MirroredE0SelectsTheOtherIdcodeInstruction) {
  EXPECT_EQ(ReadTdi({0xFF, 0x07, 0xFF, 0xFF}), 1);
  ExpectCounters(1, 2);
  EXPECT_EQ(g_idcode_pub, 224u);
  EXPECT_EQ(ReadTdi({0x60}), 1);
  EXPECT_EQ(g_idcode_pub, 224u) << "it stays";
  AllowLeaks(2);
}

TEST_F(PrescanSir, E0AsItStandsIsAnotherByte) {
  EXPECT_EQ(ReadTdi({0xE0}), 1);
  EXPECT_EQ(g_idcode_pub, 6u);
  AllowLeaks(1);
}

TEST_F(PrescanSir, E0AtEitherEnd) {
  EXPECT_EQ(ReadTdi({0xFF, 0xFF, 0x07}), 1);
  ExpectCounters(2, 0);
  EXPECT_EQ(g_idcode_pub, 224u);
  g_idcode_pub = 6;
  EXPECT_EQ(ReadTdi({0x07, 0xFF, 0xFF}), 1);
  ExpectCounters(0, 2);
  EXPECT_EQ(g_idcode_pub, 224u);
  AllowLeaks(2);
}

TEST_F(PrescanSir, AllFurtherBypassBytesGoToTheFirstCount) {
  EXPECT_EQ(ReadTdi({0xFF, 0x60, 0xFF, 0x11, 0xFF, 0xFF, 0xFF}), 1);
  ExpectCounters(2, 3);
  AllowLeaks(1);
}

TEST_F(PrescanSir, BypassAloneGivesZero) {
  EXPECT_EQ(ReadTdi({0xFF, 0xFF}), 0);
  ExpectCounters(0, 2);
  AllowLeaks(1);
}

TEST_F(PrescanSir, NoBitsGiveZero) {
  EXPECT_EQ(Read({0, 15, 23}), 0);
  ExpectCounters(0, 0);
  EXPECT_EQ(g_pos, 3u);
  EXPECT_EQ(shim::LiveBytes(), 1u);
  AllowLeaks(1);
}

TEST_F(PrescanSir, BytesCoverTheBitsRoundedUp) {
  EXPECT_EQ(Read({9, 15, 0xFF, 0x60, 23}), 1);
  ExpectCounters(1, 0);
  EXPECT_EQ(Read({16, 15, 0xFF, 0x60, 23}), 1);
  ExpectCounters(1, 0);
  EXPECT_EQ(g_pos, 5u);
  AllowLeaks(2);
}

TEST_F(PrescanSir, ModeBytesAreDecoded) {
  g_compress = 0;
  EXPECT_EQ(Read({24, 15, 1, 0xFF, 0x60, 0xFF, 0x01, 23}), 1);
  ExpectCounters(0, 2);
  EXPECT_EQ(g_pos, 8u);
  AllowLeaks(1);
}

TEST_F(PrescanSir, MissingTdiIsReportedAndStepsBack) {
  EXPECT_EQ(Read({3, 23, 0x11, 0x22}), -7);
  EXPECT_EQ(g_pos, 0u) << "2 bytes read, 3 - 1 back";
  ExpectCounters(0, 0);
  EXPECT_EQ(shim::Messages(), Messages{session::BadSirInfo()});
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(PrescanSir, StepBackIsTheLow32BitsLessOne) {
  EXPECT_EQ(Read({1, 16, 0x11}), -7);
  EXPECT_EQ(g_pos, 2u);
  EXPECT_EQ(Read({0, 16, 0x11}), -7);
  EXPECT_EQ(g_pos, 3u) << "no bits step forward by one";
  EXPECT_EQ(Read({8, 16, 0x11}), -7);
  EXPECT_EQ(g_pos, static_cast<u64>(-5));
  // Two sign-extended groups and a 5: 2^32 and more above the low 32 bits.
  EXPECT_EQ(Read({0x85, 0x80, 0x80, 0x80, 0x88, 0x80, 0x80, 0x80, 0x80, 0x01, 16}), -7);
  EXPECT_EQ(g_pos, 7u) << "11 bytes read, 5 - 1 back";
  EXPECT_EQ(Read(Join({image::Negative(-1), {16}})), -7);
  EXPECT_EQ(g_pos, 6 - u64{0xFFFFFFFE});
}

TEST_F(PrescanSir, UndecodableBlock) {
  g_compress = 0;
  EXPECT_EQ(Read({8, 15, 7, 0x60, 23}), -2);
  ExpectCounters(0, 0);
  EXPECT_EQ(g_pos, 3u);
  EXPECT_EQ(shim::Messages(), Messages{session::BadMode()});
}

TEST_F(PrescanSir, BlockWithoutMemory) {
  shim::FailAllocation(1);
  EXPECT_EQ(Read({8, 15, 0x60, 23}), -2);
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(g_status, 1u) << "the download goes on";
}

TEST_F(PrescanSir, BlockThatCannotBeAllocatedIsNotAskedFor) {
  EXPECT_EQ(Read(Join({image::Negative(-1), {15, 0x60, 23}})), -2);
  EXPECT_TRUE(shim::Allocations().empty());
  EXPECT_EQ(g_status, 1u);
}

TEST_F(PrescanSir, MissingEndIsReportedAndGivesZero) {
  EXPECT_EQ(Read({16, 15, 0xFF, 0x07, 16}), 0);
  ExpectCounters(1, 0);
  EXPECT_EQ(g_idcode_pub, 224u) << "what was counted stands";
  EXPECT_EQ(g_pos, 5u);
  EXPECT_EQ(shim::Messages(), Messages{session::BadSirInfo()});
  AllowLeaks(1);
}

}  // namespace
