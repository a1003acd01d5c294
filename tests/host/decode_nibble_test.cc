// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Mode 2, repeated nibbles: Quorlan_NibbleDecode. Blocks stand here without the mode byte.
#include "session.h"

namespace {

using image::Bytes;
using session::Content;
using session::Owned;
using shim::kFill;

class DecodeNibble : public session::SessionTest {
 protected:
  Owned Decode(const Bytes &block, s64 count) {
    Load(block);
    return Owned(Quorlan_NibbleDecode(count));
  }

  Bytes Whole(const Bytes &block, size_t count) {
    const Owned data = Decode(block, static_cast<s64>(count));
    return data == nullptr ? Bytes{} : Content(data, count + 1);
  }
};

TEST_F(DecodeNibble, EvenPatternRepeatsItsBytes) {
  EXPECT_EQ(Whole({0x04, 0x12, 0x34, 0x55}, 6), (Bytes{0x12, 0x34, 0x12, 0x34, 0x12, 0x34, kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeNibble, EvenPatternWritesWholeRepetitionsOnly) {
  EXPECT_EQ(Whole({0x04, 0x12, 0x34}, 5), (Bytes{0x12, 0x34, 0x12, 0x34, kFill, kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeNibble, EvenPatternLongerThanTheOutputWritesNothing) {
  EXPECT_EQ(Whole({0x04, 0x12, 0x34, 0x55}, 1), (Bytes{kFill, kFill}));
  EXPECT_EQ(g_pos, 3u) << "the pattern is read all the same";
}

TEST_F(DecodeNibble, SingleNibble) {
  EXPECT_EQ(Whole({0x01, 0xA0}, 3), (Bytes{0xAA, 0xAA, 0xAA, kFill}));
  EXPECT_EQ(g_pos, 2u);
}

TEST_F(DecodeNibble, OddPatternIgnoresItsLastLowNibble) {
  EXPECT_EQ(Whole({0x01, 0xA7}, 2), (Bytes{0xAA, 0xAA, kFill}));
  EXPECT_EQ(Whole({0x03, 0x12, 0x3F}, 3), (Bytes{0x12, 0x31, 0x23, kFill}));
}

TEST_F(DecodeNibble, OddPatternIsDoubled) {
  EXPECT_EQ(Whole({0x03, 0x12, 0x30}, 3), (Bytes{0x12, 0x31, 0x23, kFill}));
  EXPECT_EQ(Whole({0x03, 0x12, 0x30}, 6), (Bytes{0x12, 0x31, 0x23, 0x12, 0x31, 0x23, kFill}));
  EXPECT_EQ(Whole({0x05, 0x12, 0x34, 0x50}, 5), (Bytes{0x12, 0x34, 0x51, 0x23, 0x45, kFill}));
  EXPECT_EQ(Whole({0x07, 0x12, 0x34, 0x56, 0x70}, 7),
            (Bytes{0x12, 0x34, 0x56, 0x71, 0x23, 0x45, 0x67, kFill}));
}

TEST_F(DecodeNibble, OddPatternWritesWholeDoubleRepetitionsOnly) {
  EXPECT_EQ(Whole({0x03, 0x12, 0x30}, 4), (Bytes{0x12, 0x31, 0x23, kFill, kFill}));
  EXPECT_EQ(Whole({0x03, 0x12, 0x30}, 5), (Bytes{0x12, 0x31, 0x23, kFill, kFill, kFill}));
}

TEST_F(DecodeNibble, OddPatternThatFitsOnlyOnceWritesNothing) {
  EXPECT_EQ(Whole({0x03, 0x12, 0x30}, 2), (Bytes{kFill, kFill, kFill}));
  EXPECT_EQ(Whole({0x03, 0x12, 0x30}, 1), (Bytes{kFill, kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeNibble, PatternOfSeveralHundredNibbles) {
  Bytes block = image::Number(400);
  for (int i = 0; i < 200; ++i) {
    block.push_back(static_cast<uint8_t>(i));
  }
  const Bytes data = Whole(block, 401);
  ASSERT_EQ(data.size(), 402u);
  for (size_t i = 0; i < 400; ++i) {
    ASSERT_EQ(data[i], i % 200) << i;
  }
  EXPECT_EQ(data[400], kFill);
  EXPECT_EQ(g_pos, 202u);
}

TEST_F(DecodeNibble, NoNibblesReadNoPattern) {
  EXPECT_EQ(Whole({0x00, 0x12}, 2), (Bytes{kFill, kFill, kFill}));
  EXPECT_EQ(g_pos, 1u);
}

TEST_F(DecodeNibble, NoBytesReadThePattern) {
  EXPECT_EQ(Whole({0x02, 0x12, 0x55}, 0), (Bytes{kFill}));
  EXPECT_EQ(g_pos, 2u);
  EXPECT_EQ(Whole({0x03, 0x12, 0x30, 0x55}, 0), (Bytes{kFill}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeNibble, AllocationsOfAnEvenPattern) {
  const Owned data = Decode({0x04, 0x12, 0x34}, 5);
  ASSERT_EQ(shim::Allocations().size(), 2u);
  EXPECT_EQ(shim::Allocations()[0].size, 6u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(shim::Allocations()[1].size, 3u) << "the pattern and one byte";
  EXPECT_EQ(shim::Allocations()[1].flags, shim::kGfpKernelZero);
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(DecodeNibble, AllocationsOfAnOddPattern) {
  const Owned data = Decode({0x05, 0x12, 0x34, 0x50}, 5);
  ASSERT_EQ(shim::Allocations().size(), 3u);
  EXPECT_EQ(shim::Allocations()[1].size, 4u);
  EXPECT_EQ(shim::Allocations()[2].size, 6u) << "twice the pattern's bytes";
  EXPECT_EQ(shim::Allocations()[2].flags, shim::kGfpKernel);
  EXPECT_TRUE(shim::Allocations()[2].reallocated);
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(DecodeNibble, NothingIsKeptBesideTheOutput) {
  Decode({0x00}, 2);
  Decode({0x04, 0x12, 0x34}, 1);
  Decode({0x03, 0x12, 0x30}, 1);
  Decode({0x03, 0x12, 0x30}, 6);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(DecodeNibble, WithoutMemoryForTheOutputNothingIsReadOrSaid) {
  shim::FailAllocation(1);
  EXPECT_EQ(Decode({0x04, 0x12, 0x34}, 2), nullptr);
  EXPECT_EQ(g_pos, 0u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(DecodeNibble, WithoutMemoryForThePattern) {
  shim::FailAllocation(2);
  EXPECT_EQ(Decode({0x04, 0x12, 0x34}, 2), nullptr);
  EXPECT_EQ(g_pos, 1u) << "the number is read, the pattern is not";
  EXPECT_EQ(shim::Messages(), session::Messages{shim::Printk("nibble decode: calloc fail")});
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(DecodeNibble, WithoutMemoryForTheDoubledPatternTheOldOneLeaks) {
  shim::FailAllocation(3);
  EXPECT_EQ(Decode({0x03, 0x12, 0x30}, 3), nullptr);
  EXPECT_EQ(shim::Messages(), session::Messages{shim::Printk("nibble decode: realloc fail")});
  ASSERT_EQ(shim::LiveRequests(), 1u);
  EXPECT_EQ(shim::LiveBytes(), 3u) << "the old pattern of two bytes and one";
  AllowLeaks(1);
}

TEST_F(DecodeNibble, PatternThatCannotBeAllocatedIsNotAskedFor) {
  EXPECT_EQ(Decode({0xFF, 0xFF, 0xFF, 0xFF, 0x07}, 2), nullptr);
  EXPECT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(shim::Messages(), session::Messages{shim::Printk("nibble decode: calloc fail")});
}

TEST_F(DecodeNibble, NegativeLengthsTouchNoForeignMemory) {
  for (const s32 nibbles : {-1, -2, -3, -4, -5, -100, -101, INT32_MIN, INT32_MIN + 1}) {
    const Owned data = Decode(image::Join({image::Negative(nibbles), {0x12, 0x34}}), 4);
    if (data != nullptr) {
      EXPECT_EQ(Content(data, 5), Bytes(5, kFill)) << nibbles;
    }
    EXPECT_EQ(g_pos, 5u) << nibbles << ": no pattern is read";
  }
  AllowLeaks(shim::kAnyLeaks);  // some cannot be doubled, and that leaks
}

TEST_F(DecodeNibble, NegativeCountReadsThePatternAtMost) {
  const Owned even = Decode({0x02, 0x12}, -1);
  EXPECT_NE(even, nullptr) << "of no bytes";
  EXPECT_EQ(g_pos, 2u);
  const Owned odd = Decode({0x01, 0xA0}, -1);
  EXPECT_NE(odd, nullptr);
  EXPECT_EQ(g_pos, 2u);
  EXPECT_EQ(Decode({0x02, 0x12}, -2), nullptr);
  EXPECT_EQ(g_pos, 0u);
}

TEST_F(DecodeNibble, ThroughTheModeByte) {
  g_compress = 0;
  Load({0x02, 0x03, 0x12, 0x30});
  const Owned data(Quorlan_ProcessData(4));
  EXPECT_EQ(Content(data, 5), (Bytes{0x12, 0x31, 0x23, kFill, kFill}));
  EXPECT_EQ(g_pos, 4u);
}

}  // namespace
