// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Mode 1, runs of one escape byte: Quorlan_BytesDecode. Blocks stand here without the mode byte.
#include "session.h"

namespace {

using image::Bytes;
using session::Content;
using session::Owned;

class DecodeRunlength : public session::SessionTest {
 protected:
  Owned Decode(const Bytes &block, s64 count) {
    Load(block);
    return Owned(Quorlan_BytesDecode(count));
  }

  // The whole buffer: `count` bytes and the one behind them.
  Bytes Whole(const Bytes &block, size_t count) {
    const Owned data = Decode(block, static_cast<s64>(count));
    return data == nullptr ? Bytes{} : Content(data, count + 1);
  }
};

TEST_F(DecodeRunlength, RunIsOneMoreThanItsNumber) {
  EXPECT_EQ(Whole({0xFF, 0xFF, 0x03}, 4), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, shim::kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeRunlength, RunOfOneHasTheNumberZero) {
  EXPECT_EQ(Whole({0xFF, 0xFF, 0x00}, 1), (Bytes{0xFF, shim::kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeRunlength, OtherBytesStandForThemselves) {
  EXPECT_EQ(Whole({0xFF, 0x12, 0xFF, 0x01, 0x34}, 4), (Bytes{0x12, 0xFF, 0xFF, 0x34, shim::kFill}));
  EXPECT_EQ(g_pos, 5u);
}

TEST_F(DecodeRunlength, AnyByteCanBeTheEscape) {
  EXPECT_EQ(Whole({0x00, 0xFF, 0x00, 0x02, 0x01}, 5),
            (Bytes{0xFF, 0x00, 0x00, 0x00, 0x01, shim::kFill}));
}

TEST_F(DecodeRunlength, RunsFollowEachOther) {
  EXPECT_EQ(Whole({0xAA, 0xAA, 0x01, 0xAA, 0x00, 0xAA, 0x01}, 5),
            (Bytes{0xAA, 0xAA, 0xAA, 0xAA, 0xAA, shim::kFill}));
  EXPECT_EQ(g_pos, 7u);
}

TEST_F(DecodeRunlength, NumberOfSeveralBytes) {
  Bytes expected(201, 0xEE);
  expected[200] = 0x11;
  expected.push_back(shim::kFill);
  EXPECT_EQ(Whole({0xEE, 0xEE, 0xC7, 0x01, 0x11}, 201), expected);
}

TEST_F(DecodeRunlength, RunPastTheCountIsCutOffBehindItsNumber) {
  EXPECT_EQ(Whole({0xFF, 0x01, 0xFF, 0x7F, 0x55}, 3), (Bytes{0x01, 0xFF, 0xFF, shim::kFill}));
  EXPECT_EQ(g_pos, 4u);
}

TEST_F(DecodeRunlength, EscapeAsTheLastByteStillReadsItsNumber) {
  EXPECT_EQ(Whole({0xFF, 0x01, 0xFF, 0x81, 0x01, 0x55}, 2), (Bytes{0x01, 0xFF, shim::kFill}));
  EXPECT_EQ(g_pos, 5u);
}

TEST_F(DecodeRunlength, NegativeNumberRepeatsNothing) {
  // A fifth group that sets bit 31 makes the number negative.
  EXPECT_EQ(Whole({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0x22}, 2),
            (Bytes{0xFF, 0x22, shim::kFill}));
}

TEST_F(DecodeRunlength, NoBytesStillReadTheEscape) {
  const Owned data = Decode({0xFF, 0xFF, 0x03}, 0);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 1), (Bytes{shim::kFill}));
  EXPECT_EQ(shim::SizeOf(data.get()), 1u);
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(g_buffer[0], 0xFF);
}

TEST_F(DecodeRunlength, NegativeCountReadsTheEscapeAtMost) {
  const Owned data = Decode({0xFF, 0xFF, 0x03}, -1);
  EXPECT_NE(data, nullptr) << "of no bytes";
  EXPECT_EQ(shim::Allocations()[0].size, 0u);
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(Decode({0xFF, 0xFF, 0x03}, -2), nullptr);
  EXPECT_EQ(g_pos, 0u);
  EXPECT_EQ(shim::Allocations().size(), 1u) << "more than there can be is not asked for";
}

TEST_F(DecodeRunlength, OneAllocationNotZeroed) {
  const Owned data = Decode({0xFF, 0x01, 0x02}, 2);
  ASSERT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(shim::Allocations()[0].size, 3u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
}

TEST_F(DecodeRunlength, WithoutMemoryNothingIsRead) {
  shim::FailAllocation(1);
  EXPECT_EQ(Decode({0xFF, 0x01}, 1), nullptr);
  EXPECT_EQ(g_pos, 0u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(DecodeRunlength, ThroughTheModeByte) {
  g_compress = 0;
  Load({0x01, 0xFF, 0x12, 0xFF, 0x01, 0x34});
  const Owned data(Quorlan_ProcessData(4));
  EXPECT_EQ(Content(data, 5), (Bytes{0x12, 0xFF, 0xFF, 0x34, shim::kFill}));
  EXPECT_EQ(g_pos, 6u);
}

}  // namespace
