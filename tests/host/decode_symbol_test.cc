// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Mode 3, one-symbol bit coding: Quorlan_HuffmanDecode. Blocks stand here without the mode byte.
#include "session.h"

namespace {

using image::Bytes;
using session::Content;
using session::Owned;
using shim::kFill;

class DecodeSymbol : public session::SessionTest {
 protected:
  Owned Decode(const Bytes &block, s64 count) {
    Load(block);
    return Owned(Quorlan_HuffmanDecode(count));
  }

  Bytes Whole(const Bytes &block, size_t count) {
    const Owned data = Decode(block, static_cast<s64>(count));
    return data == nullptr ? Bytes{} : Content(data, count + 1);
  }
};

TEST_F(DecodeSymbol, ZeroBitsStandForTheSymbol) {
  EXPECT_EQ(Whole({0x5A, 0x00, 0xFF}, 8),
            (Bytes{0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, kFill}));
  EXPECT_EQ(g_pos, 2u);
}

TEST_F(DecodeSymbol, NinthSymbolFetchesTheNextByte) {
  EXPECT_EQ(Whole({0x5A, 0x00, 0x7F}, 9), image::Join({Bytes(9, 0x5A), {kFill}}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeSymbol, LiteralBetweenTwoSymbols) {
  EXPECT_EQ(Whole({0x00, 0x6A, 0x80}, 3), (Bytes{0x00, 0xAA, 0x00, kFill}));
  EXPECT_EQ(g_pos, 3u) << "just behind the byte 80";
}

TEST_F(DecodeSymbol, LiteralIsMostSignificantBitFirst) {
  // 1, then 0000 0001.
  EXPECT_EQ(Whole({0xFF, 0x80, 0x80}, 1), (Bytes{0x01, kFill}));
  // 1, then 1000 0000.
  EXPECT_EQ(Whole({0xFF, 0xC0, 0x00}, 1), (Bytes{0x80, kFill}));
}

TEST_F(DecodeSymbol, LiteralsRunAcrossBytesWithoutRealignment) {
  // 1 00010010, 1 00110100, 0, 1 01010110: bits 10001001 01001101 00010101 0110....
  EXPECT_EQ(Whole({0x99, 0x89, 0x4D, 0x15, 0x60}, 4), (Bytes{0x12, 0x34, 0x99, 0x56, kFill}));
  EXPECT_EQ(g_pos, 5u);
}

TEST_F(DecodeSymbol, EightLiteralsFillNineBytes) {
  // Eight times 1 11111111: 72 ones.
  EXPECT_EQ(Whole(image::Join({{0x00}, Bytes(9, 0xFF), {0x11}}), 8),
            image::Join({Bytes(8, 0xFF), {kFill}}));
  EXPECT_EQ(g_pos, 10u);
}

TEST_F(DecodeSymbol, LiteralThatEndsWithItsByteReadsNoFurther) {
  // Seven symbols, then 1 and eight bits of the next byte.
  EXPECT_EQ(Whole({0x07, 0x01, 0xC3, 0x55}, 8),
            (Bytes{0x07, 0x07, 0x07, 0x07, 0x07, 0x07, 0x07, 0xC3, kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeSymbol, LiteralMayBeTheSymbol) {
  // 1 01010101, 0.
  EXPECT_EQ(Whole({0x55, 0xAA, 0x80}, 2), (Bytes{0x55, 0x55, kFill}));
}

TEST_F(DecodeSymbol, NoBytesStillReadTheSymbol) {
  const Owned data = Decode({0x5A, 0x00}, 0);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 1), (Bytes{kFill}));
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(g_buffer[0], 0x5A);
}

TEST_F(DecodeSymbol, NegativeCountReadsTheSymbolAtMost) {
  const Owned data = Decode({0x5A, 0x00}, -1);
  EXPECT_NE(data, nullptr) << "of no bytes";
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(Decode({0x5A, 0x00}, -2), nullptr);
  EXPECT_EQ(g_pos, 0u);
}

TEST_F(DecodeSymbol, OneAllocationNotZeroed) {
  const Owned data = Decode({0x5A, 0x00}, 4);
  ASSERT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(shim::Allocations()[0].size, 5u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
}

TEST_F(DecodeSymbol, WithoutMemoryNothingIsRead) {
  shim::FailAllocation(1);
  EXPECT_EQ(Decode({0x5A, 0x00}, 1), nullptr);
  EXPECT_EQ(g_pos, 0u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(DecodeSymbol, ThroughTheModeByte) {
  g_compress = 0;
  Load({0x03, 0x00, 0x6A, 0x80});
  const Owned data(Quorlan_ProcessData(3));
  EXPECT_EQ(Content(data, 4), (Bytes{0x00, 0xAA, 0x00, kFill}));
  EXPECT_EQ(g_pos, 4u);
}

}  // namespace
