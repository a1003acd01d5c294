// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reversal of characters, of the bits in a byte, and of a whole array as one stream of bits.
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "engine_fixture.h"

namespace {

class UtilReverseTest : public shim::Test {};

const uint8_t *Text(const char *text) {
  return reinterpret_cast<const uint8_t *>(text);
}

TEST_F(UtilReverseTest, StringComesBackwards) {
  uint8_t *reversed = Quorlan_ReverseStr(Text("abc"), 3);
  EXPECT_EQ(String(reversed), "cba");
  EXPECT_EQ(shim::SizeOf(reversed), 4u);
  ASSERT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  kfree(reversed);
}

TEST_F(UtilReverseTest, EmptyStringStaysEmpty) {
  uint8_t *reversed = Quorlan_ReverseStr(Text("abc"), 0);
  EXPECT_EQ(String(reversed), "");
  EXPECT_EQ(shim::SizeOf(reversed), 1u);
  kfree(reversed);
}

TEST_F(UtilReverseTest, StringGoesByItsLengthNotByATerminator) {
  auto *source = static_cast<uint8_t *>(shim::NewBlock(4));
  source[0] = 'w';
  source[1] = 0;
  source[2] = 'y';
  source[3] = 'z';
  uint8_t *reversed = Quorlan_ReverseStr(source, 4);
  EXPECT_EQ(reversed[0], 'z');
  EXPECT_EQ(reversed[1], 'y');
  EXPECT_EQ(reversed[2], 0);
  EXPECT_EQ(reversed[3], 'w');
  EXPECT_EQ(reversed[4], 0);
  kfree(reversed);
}

TEST_F(UtilReverseTest, StringLeavesItsSourceAlone) {
  uint8_t *source = shim::NewString("10");
  kfree(Quorlan_ReverseStr(source, 2));
  EXPECT_EQ(String(source), "10");
}

TEST_F(UtilReverseTest, StringWithoutMemoryIsNull) {
  shim::FailAllocation(1);
  EXPECT_EQ(Quorlan_ReverseStr(Text("abc"), 3), nullptr);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(UtilReverseTest, CharExamples) {
  EXPECT_EQ(Quorlan_ReverseChar(6), 0x60);
  EXPECT_EQ(Quorlan_ReverseChar(224), 0x07);
  EXPECT_EQ(Quorlan_ReverseChar(0x01), 0x80);
  EXPECT_EQ(Quorlan_ReverseChar(0x1FF), 0xFF);
}

TEST_F(UtilReverseTest, CharMovesEveryBit) {
  for (int bit = 0; bit < 8; ++bit) {
    EXPECT_EQ(Quorlan_ReverseChar(1u << bit), 0x80 >> bit);
  }
}

TEST_F(UtilReverseTest, CharIgnoresHigherBits) {
  for (int bit = 8; bit < 32; ++bit) {
    EXPECT_EQ(Quorlan_ReverseChar(1u << bit), 0) << bit;
  }
  EXPECT_EQ(Quorlan_ReverseChar(0xFFFFFF00u | 0x06), 0x60);
}

TEST_F(UtilReverseTest, CharTwiceIsTheSame) {
  for (int c = 0; c < 256; ++c) {
    EXPECT_EQ(Quorlan_ReverseChar(static_cast<uint32_t>(Quorlan_ReverseChar(c))), c);
  }
}

TEST_F(UtilReverseTest, BytesAreMirroredEndToEnd) {
  const std::array<uint8_t, 2> source = {0x01, 0x02};
  uint8_t *reversed = Quorlan_ReverseCharStr(source.data(), 2);
  EXPECT_EQ(reversed[0], 0x40);
  EXPECT_EQ(reversed[1], 0x80);
  EXPECT_EQ(reversed[2], 0x00);
  EXPECT_EQ(shim::SizeOf(reversed), 3u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  kfree(reversed);
}

TEST_F(UtilReverseTest, BytesGoByTheirLength) {
  const std::array<uint8_t, 3> source = {0x00, 0x0F, 0x00};
  uint8_t *reversed = Quorlan_ReverseCharStr(source.data(), 3);
  EXPECT_EQ(reversed[0], 0x00);
  EXPECT_EQ(reversed[1], 0xF0);
  EXPECT_EQ(reversed[2], 0x00);
  EXPECT_EQ(reversed[3], 0x00);
  kfree(reversed);
}

TEST_F(UtilReverseTest, NoBytesGiveTheTerminatorAlone) {
  uint8_t *reversed = Quorlan_ReverseCharStr(Text("a"), 0);
  EXPECT_EQ(shim::SizeOf(reversed), 1u);
  EXPECT_EQ(reversed[0], 0);
  kfree(reversed);
}

TEST_F(UtilReverseTest, BytesWithoutMemoryAreNull) {
  shim::FailAllocation(1);
  EXPECT_EQ(Quorlan_ReverseCharStr(Text("ab"), 2), nullptr);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(UtilReverseTest, NegativeLengthsTouchNothing) {
  for (const int32_t n : {-1, -8, std::numeric_limits<int32_t>::min()}) {
    auto *block = static_cast<uint8_t *>(shim::NewBlock(0));
    EXPECT_EQ(Quorlan_ReverseStr(block, n), nullptr);
    EXPECT_EQ(Quorlan_ReverseCharStr(block, n), nullptr);
  }
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(UtilReverseTest, LengthsThatNoKernelHasGiveNull) {
  auto *block = static_cast<uint8_t *>(shim::NewBlock(0));
  const int32_t longest = std::numeric_limits<int32_t>::max();
  EXPECT_EQ(Quorlan_ReverseStr(block, longest), nullptr);
  EXPECT_EQ(Quorlan_ReverseCharStr(block, longest), nullptr);
}

}  // namespace
