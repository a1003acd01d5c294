// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The reader's block decoders: what they consume and give, and what they say of blocks that are not
// right.
#include <gtest/gtest.h>

#include "lzw_codes.h"
#include "tvb/block.h"
#include "tvb_data.h"

namespace {

using tvb::BlockView;
using tvb::Buffer;

BlockView Measure(const Buffer &image, uint64_t count, bool plain = false) {
  tvb::Cursor cursor(image, 0);
  const BlockView block = tvb::MeasureBlock(cursor, count, plain);
  EXPECT_EQ(cursor.position(), block.size);
  return block;
}

void ExpectDecodes(const Buffer &block, const Buffer &data, bool plain = false) {
  Buffer image = block;
  image.push_back(0x55);
  const BlockView view = Measure(image, data.size(), plain);
  EXPECT_TRUE(view.Exact());
  EXPECT_EQ(view.size, block.size());
  EXPECT_EQ(tvb::DecodeBlock(image, view), data);
}

void ExpectFault(const Buffer &image, uint64_t count, const std::string &text) {
  const BlockView block = Measure(image, count);
  ASSERT_TRUE(block.fault);
  EXPECT_NE(block.fault->message.find(text), std::string::npos) << block.fault->message;
}

TEST(TvbReadBlock, PlainBlockHasNoModeByte) {
  ExpectDecodes({0x04, 0x02}, {0x04, 0x02}, true);
  EXPECT_FALSE(Measure({0x04}, 1, true).mode);
}

TEST(TvbReadBlock, RawBlock) {
  ExpectDecodes({0, 0x12, 0x34}, {0x12, 0x34});
}

TEST(TvbReadBlock, RunLength) {
  ExpectDecodes({1, 0xFF, 0xFF, 0x03}, {0xFF, 0xFF, 0xFF, 0xFF});
  ExpectDecodes({1, 0xFF, 0xFF, 0x00}, {0xFF});
  ExpectDecodes({1, 0xFF, 0x12, 0xFF, 0x01, 0x34}, {0x12, 0xFF, 0xFF, 0x34});
}

TEST(TvbReadBlock, RunLengthOfNoBytesHasItsEscapeByte) {
  ExpectDecodes({1, 0xFF}, {});
}

TEST(TvbReadBlock, RunLongerThanTheBlockIsSurplus) {
  const BlockView block = Measure({1, 0xAA, 0x01, 0xAA, 0x07, 0x55}, 4);
  EXPECT_EQ(block.size, 5u);
  EXPECT_EQ(block.written, 4u);
  EXPECT_EQ(block.surplus, 5u);
  EXPECT_EQ(block.parameter, 0xAAu);
}

TEST(TvbReadBlock, NegativeRunIsAFaultAndRepeatsNothing) {
  const Buffer image = {1, 0xAA, 0xAA, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0x11};
  ExpectFault(image, 2, "a run of -1 more bytes");
  EXPECT_EQ(tvb::DecodeBlock(image, Measure(image, 2)), (Buffer{0xAA, 0x11}));
}

TEST(TvbReadBlock, NibblePatterns) {
  ExpectDecodes({2, 0x01, 0xA0}, {0xAA, 0xAA, 0xAA});
  ExpectDecodes({2, 0x03, 0x12, 0x30}, {0x12, 0x31, 0x23});
  ExpectDecodes({2, 0x04, 0x12, 0x34}, {0x12, 0x34, 0x12, 0x34});
}

TEST(TvbReadBlock, NibblePatternThatDoesNotFillItsBlockLeavesTheRestOpen) {
  const Buffer odd = {2, 0x03, 0x12, 0x30};
  EXPECT_EQ(Measure(odd, 4).written, 3u);
  EXPECT_EQ(tvb::DecodeBlock(odd, Measure(odd, 4)), (Buffer{0x12, 0x31, 0x23, 0}));
  EXPECT_EQ(Measure({2, 0x04, 0x12, 0x34}, 5).written, 4u);
  EXPECT_EQ(Measure({2, 0x04, 0x12, 0x34}, 1).written, 0u);
}

TEST(TvbReadBlock, EmptyNibblePatternIsOnlyItsNumber) {
  const BlockView block = Measure({2, 0x00, 0x12}, 3);
  EXPECT_EQ(block.size, 2u);
  EXPECT_EQ(block.written, 0u);
}

TEST(TvbReadBlock, NegativeNibblePatternIsAFault) {
  ExpectFault({2, 0x80, 0x80, 0x80, 0x80, 0x08}, 3, "a pattern of -2147483648 nibbles");
}

TEST(TvbReadBlock, BitCoding) {
  ExpectDecodes({3, 0x00, 0x6A, 0x80}, {0x00, 0xAA, 0x00});
  ExpectDecodes({3, 0x77}, {});
}

TEST(TvbReadBlock, Lzw) {
  ExpectDecodes({4, 0x00, 0xFF, 0x01}, {});
  ExpectDecodes({4, 0x00, 0x41, 0xFF, 0x01}, {0x41});
  ExpectDecodes({4, 0x00, 0x41, 0xFF, 0xFE, 0x03}, {0x41, 0x41, 0x41});
  ExpectDecodes({4, 0x00, 0x41, 0x42, 0xFE, 0xFF, 0xFD, 0x07},
                {0x41, 0x42, 0x41, 0x42, 0x41, 0x42, 0x41});
  ExpectDecodes({4, 0x00, 0xFF, 0x82, 0xFE, 0x03}, {0x41});
}

TEST(TvbReadBlock, LzwStreamThatEndsEarlyOrLate) {
  const Buffer stream = {4, 0x00, 0x41, 0xFF, 0xFE, 0x03};
  EXPECT_EQ(Measure(stream, 5).written, 3u);
  EXPECT_EQ(Measure(stream, 2).surplus, 1u);
  EXPECT_EQ(tvb::DecodeBlock(stream, Measure(stream, 2)), (Buffer{0x41, 0x41}));
}

TEST(TvbReadBlock, LzwDictionaryOfNoSizeIsAFaultAndEndsTheBlock) {
  for (uint8_t k : {0x04, 0x80, 0xFF}) {
    ExpectFault({4, k, 0x41, 0xFF, 0x01}, 1, "expected 0 to 3");
    EXPECT_EQ(Measure({4, k, 0x41}, 1).size, 2u);
  }
}

TEST(TvbReadBlock, UnknownModeIsAFaultAndOnlyTheModeByteIsRead) {
  ExpectFault({5, 0x41}, 1, "encoding 0x05");
  EXPECT_EQ(Measure({5, 0x41}, 1).size, 1u);
  EXPECT_TRUE(tvb::DecodeBlock(Buffer{5, 0x41}, Measure({5, 0x41}, 1)).empty());
}

class TvbReadBlockEncodings : public ::testing::TestWithParam<size_t> {};

TEST_P(TvbReadBlockEncodings, DecodeWhatTheWriterEncodes) {
  for (const tvb_data::Sample &sample : tvb_data::Samples(GetParam())) {
    for (const tvb::EncodingRow &row : tvb::Encodings()) {
      SCOPED_TRACE(sample.name + ", " + row.name);
      ExpectDecodes(tvb::EncodeBlock(sample.bytes, tvb::BlockChoice::As(row.encoding)),
                    sample.bytes);
    }
    for (int k = 0; k <= 3; ++k) {
      SCOPED_TRACE(sample.name + ", k " + std::to_string(k));
      ExpectDecodes(tvb::EncodeBlock(sample.bytes, tvb::BlockChoice::With(tvb::Encoding::kLzw, k)),
                    sample.bytes);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, TvbReadBlockEncodings,
                         ::testing::Values(1, 2, 3, 8, 255, 256, 257, 1000, 9000));

TEST(TvbReadBlock, LzwStreamsWithRestartsDecode) {
  const Buffer data = tvb_data::TextLike(5000, 3);
  for (size_t every : {1, 2, 255, 300, 1000}) {
    Buffer block = {4};
    tvb::Append(block, lzw::Restarting(data, 1, every));
    ExpectDecodes(block, data);
  }
}

TEST(TvbReadBlock, EveryPrefixOfABlockIsCutOff) {
  const Buffer data = tvb_data::Sparse(300, 0x00, 5, 1);
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    const Buffer block = tvb::EncodeBlock(data, tvb::BlockChoice::As(row.encoding));
    for (size_t size = 0; size < block.size(); ++size) {
      ExpectFault(Buffer(block.begin(), block.begin() + static_cast<long>(size)), data.size(),
                  "the image ends inside");
    }
  }
}

TEST(TvbReadBlock, HugeBlocksAreMeasuredWithoutBeingDecoded) {
  const uint64_t count = 0x1FFFFFFF;
  EXPECT_TRUE(Measure({1, 0x00, 0x00, 0xFE, 0xFF, 0xFF, 0xFF, 0x01}, count).Exact());
  EXPECT_TRUE(Measure({2, 0x02, 0x5A}, count).Exact());
  EXPECT_TRUE(Measure({0, 1, 2, 3}, count).fault);
  EXPECT_TRUE(Measure({3, 1, 2, 3}, count).fault);
}

}  // namespace
