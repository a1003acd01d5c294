// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The block encodings, byte for byte, and the choice between them.
#include <gtest/gtest.h>

#include <chrono>

#include "tvb/bit_coding.h"
#include "tvb/block.h"
#include "tvb/error.h"
#include "tvb/nibble.h"
#include "tvb/number.h"
#include "tvb/run_length.h"
#include "tvb_data.h"
#include "tvb_reference.h"

namespace {

using tvb::BlockChoice;
using tvb::Buffer;
using tvb::Bytes;
using tvb::EncodeBlock;
using tvb::Encoding;

Buffer Number(uint32_t value) {
  Buffer out;
  tvb::AppendNumber(out, value);
  EXPECT_EQ(tvb::NumberSize(value), out.size());
  return out;
}

Buffer RunLength(Bytes data, uint8_t escape) {
  Buffer out = {1};
  tvb::AppendRunLength(out, data, escape);
  return out;
}

Buffer Nibble(Bytes data, size_t nibbles) {
  Buffer out = {2};
  tvb::AppendNibble(out, data, nibbles);
  return out;
}

Buffer BitCoding(Bytes data, uint8_t symbol) {
  Buffer out = {3};
  tvb::AppendBitCoding(out, data, symbol);
  return out;
}

TEST(TvbNumber, IsSevenBitsAByteLowestFirst) {
  EXPECT_EQ(Number(0), Buffer({0x00}));
  EXPECT_EQ(Number(5), Buffer({0x05}));
  EXPECT_EQ(Number(127), Buffer({0x7F}));
  EXPECT_EQ(Number(128), Buffer({0x80, 0x01}));
  EXPECT_EQ(Number(133), Buffer({0x85, 0x01}));
  EXPECT_EQ(Number(255), Buffer({0xFF, 0x01}));
  EXPECT_EQ(Number(16383), Buffer({0xFF, 0x7F}));
  EXPECT_EQ(Number(16384), Buffer({0x80, 0x80, 0x01}));
  EXPECT_EQ(Number(tvb::kLargestNumber), Buffer({0xFF, 0xFF, 0xFF, 0xFF, 0x07}));
  EXPECT_EQ(Number(4294967295), Buffer({0xFF, 0xFF, 0xFF, 0xFF, 0x0F}));
}

TEST(TvbBlock, RawIsTheBytesAfterTheModeByte) {
  EXPECT_EQ(EncodeBlock({0x12, 0x34, 0x56}, BlockChoice::As(Encoding::kRaw)),
            Buffer({0x00, 0x12, 0x34, 0x56}));
  EXPECT_EQ(EncodeBlock({}, BlockChoice::As(Encoding::kRaw)), Buffer({0x00}));
}

TEST(TvbBlock, RunLengthStoresRunsOfTheEscapeByte) {
  EXPECT_EQ(RunLength({0xFF, 0xFF, 0xFF, 0xFF}, 0xFF), Buffer({0x01, 0xFF, 0xFF, 0x03}));
  EXPECT_EQ(RunLength({0xFF}, 0xFF), Buffer({0x01, 0xFF, 0xFF, 0x00}));
  EXPECT_EQ(RunLength({0x12, 0xFF, 0xFF, 0x34}, 0xFF),
            Buffer({0x01, 0xFF, 0x12, 0xFF, 0x01, 0x34}));
  EXPECT_EQ(RunLength({0x12, 0xFF}, 0x00), Buffer({0x01, 0x00, 0x12, 0xFF}));
  EXPECT_EQ(RunLength({}, 0x41), Buffer({0x01, 0x41}));
  EXPECT_EQ(RunLength(Buffer(128, 0x07), 0x07), Buffer({0x01, 0x07, 0x07, 0x7F}));
  EXPECT_EQ(RunLength(Buffer(129, 0x07), 0x07), Buffer({0x01, 0x07, 0x07, 0x80, 0x01}));
}

TEST(TvbBlock, TheEscapeByteIsTheOneThatSavesMost) {
  Buffer data = {1, 1, 1, 2, 2, 2, 2, 2, 3, 1, 1, 1};
  EXPECT_EQ(tvb::BestEscapeByte(data), 2);
  EXPECT_EQ(tvb::BestEscapeByte({9, 9, 9, 9, 9, 0, 0, 0, 0, 0}), 0);
  for (const tvb_data::Sample &sample : tvb_data::Samples(600)) {
    size_t best = RunLength(sample.bytes, tvb::BestEscapeByte(sample.bytes)).size();
    for (int escape = 0; escape < 256; ++escape) {
      EXPECT_LE(best, RunLength(sample.bytes, static_cast<uint8_t>(escape)).size()) << sample.name;
    }
  }
}

TEST(TvbBlock, NibblesRepeatAPatternOfEvenOrOddLength) {
  EXPECT_EQ(Nibble({0xAA, 0xAA, 0xAA}, 1), Buffer({0x02, 0x01, 0xA0}));
  EXPECT_EQ(Nibble({0x12, 0x31, 0x23}, 3), Buffer({0x02, 0x03, 0x12, 0x30}));
  EXPECT_EQ(Nibble({0x12, 0x34, 0x12, 0x34}, 4), Buffer({0x02, 0x04, 0x12, 0x34}));
  EXPECT_EQ(Nibble({0x12, 0x34}, 4), Buffer({0x02, 0x04, 0x12, 0x34}));
  EXPECT_EQ(Nibble({}, 0), Buffer({0x02, 0x00}));
}

TEST(TvbBlock, APatternThatDoesNotFillTheBlockIsRefused) {
  const Buffer five = {0x12, 0x34, 0x12, 0x34, 0x12};
  EXPECT_FALSE(tvb::IsNibblePattern(five, 4));
  EXPECT_THROW(Nibble(five, 4), tvb::Error);
  EXPECT_THROW(Nibble({0x12, 0x31, 0x23, 0x12}, 3), tvb::Error);
  EXPECT_THROW(Nibble(five, 0), tvb::Error);
  EXPECT_THROW(Nibble({}, 1), tvb::Error);
  EXPECT_TRUE(tvb::IsNibblePattern(five, 10));
}

TEST(TvbBlock, TheShortestPatternIsFound) {
  EXPECT_EQ(tvb::ShortestNibblePattern({}), 0u);
  EXPECT_EQ(tvb::ShortestNibblePattern({0x55, 0x55}), 1u);
  EXPECT_EQ(tvb::ShortestNibblePattern({0x5A, 0x5A}), 2u);
  EXPECT_EQ(tvb::ShortestNibblePattern({0x12, 0x31, 0x23}), 3u);
  EXPECT_EQ(tvb::ShortestNibblePattern({0x12, 0x34, 0x12, 0x34, 0x12}), 10u);
  for (size_t size : {1, 2, 6, 15, 30, 63, 120}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      size_t shortest = 1;
      while (!tvb::IsNibblePattern(sample.bytes, shortest)) {
        ++shortest;
      }
      EXPECT_EQ(tvb::ShortestNibblePattern(sample.bytes), shortest) << sample.name << " " << size;
    }
  }
}

TEST(TvbBlock, BitCodingTakesOneBitForTheSymbolAndNineForOthers) {
  EXPECT_EQ(BitCoding({0x00, 0xAA, 0x00}, 0x00), Buffer({0x03, 0x00, 0x6A, 0x80}));
  EXPECT_EQ(BitCoding({}, 0x55), Buffer({0x03, 0x55}));
  EXPECT_EQ(BitCoding(Buffer(8, 0x55), 0x55), Buffer({0x03, 0x55, 0x00}));
  EXPECT_EQ(BitCoding(Buffer(9, 0x55), 0x55), Buffer({0x03, 0x55, 0x00, 0x00}));
  EXPECT_EQ(BitCoding({0x01, 0xFF}, 0x00), Buffer({0x03, 0x00, 0x80, 0xFF, 0xC0}));
}

TEST(TvbBlock, TheSymbolIsTheMostFrequentByte) {
  EXPECT_EQ(tvb::BestSymbol({1, 2, 3, 2, 1, 2}), 2);
  EXPECT_EQ(tvb::BestSymbol({7, 3}), 3);
  EXPECT_EQ(EncodeBlock({1, 2, 2}, BlockChoice::As(Encoding::kBitCoding)),
            Buffer({0x03, 0x02, 0x80, 0x80}));
}

TEST(TvbBlock, TheSmallestIsTakenAndRawWhereNoneIsSmaller) {
  EXPECT_EQ(EncodeBlock({}), Buffer({0x00}));
  EXPECT_EQ(EncodeBlock({0x60}), Buffer({0x00, 0x60}));
  EXPECT_EQ(EncodeBlock(Buffer(3, 0xFF)), Buffer({0x02, 0x01, 0xF0}));
  EXPECT_EQ(EncodeBlock(tvb_data::Random(64, 1))[0], 0);
  Buffer runs = {1, 2, 3, 4};
  runs.insert(runs.end(), 300, 0xFF);
  EXPECT_EQ(EncodeBlock(runs), Buffer({0x01, 0xFF, 1, 2, 3, 4, 0xFF, 0xAB, 0x02}));
  EXPECT_EQ(EncodeBlock(tvb_data::Sparse(400, 0x00, 12, 5))[0], 3);
  EXPECT_EQ(EncodeBlock(tvb_data::TextLike(4000, 5))[0], 4);
  Buffer long_text = EncodeBlock(tvb_data::TextLike(30000, 5));
  EXPECT_EQ(Buffer(long_text.begin(), long_text.begin() + 2), Buffer({4, 3}));
}

TEST(TvbBlock, NoForcedEncodingIsSmallerThanTheSmallest) {
  for (size_t size : {1, 2, 3, 9, 100, 1000, 30000}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      size_t smallest = EncodeBlock(sample.bytes).size();
      EXPECT_LE(smallest, 1 + size);
      for (int mode = 0; mode <= 4; ++mode) {
        BlockChoice choice = BlockChoice::As(static_cast<Encoding>(mode));
        Buffer block = EncodeBlock(sample.bytes, choice);
        EXPECT_EQ(block[0], mode);
        EXPECT_LE(smallest, block.size()) << sample.name << " " << size << " mode " << mode;
      }
      for (int k = 0; k <= 3; ++k) {
        Buffer block = EncodeBlock(sample.bytes, BlockChoice::Lzw(k));
        EXPECT_EQ(block[0], 4);
        EXPECT_EQ(block[1], k);
        EXPECT_LE(smallest, block.size()) << sample.name << " " << size << " k " << k;
      }
    }
  }
}

TEST(TvbBlock, BadChoicesAreRefused) {
  EXPECT_THROW(EncodeBlock({1}, BlockChoice::Lzw(4)), tvb::Error);
  EXPECT_THROW(EncodeBlock({1}, BlockChoice::Lzw(-1)), tvb::Error);
  EXPECT_THROW(EncodeBlock({1}, BlockChoice{Encoding::kRaw, 1}), tvb::Error);
  EXPECT_THROW(EncodeBlock({1}, BlockChoice{std::nullopt, 1}), tvb::Error);
}

TEST(TvbBlock, EveryEncodingIsReadBackByASecondReader) {
  for (size_t size : {1, 2, 3, 8, 15, 129, 700, 5000}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      for (int mode = 0; mode <= 4; ++mode) {
        BlockChoice choice = BlockChoice::As(static_cast<Encoding>(mode));
        tvb_reference::Input in(EncodeBlock(sample.bytes, choice));
        EXPECT_EQ(tvb_reference::Block(in, size), sample.bytes) << sample.name << " mode " << mode;
        EXPECT_TRUE(in.AtEnd()) << sample.name << " " << size << " mode " << mode;
      }
    }
  }
}

// A choice that compared everything with everything would take minutes here.
TEST(TvbBlock, FourMillionBitsTakeLessThanAFewSeconds) {
  for (const tvb_data::Sample &sample : tvb_data::Samples(500000)) {
    auto start = std::chrono::steady_clock::now();
    Buffer block = EncodeBlock(sample.bytes);
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(took.count(), 3.0) << sample.name;
    EXPECT_LE(block.size(), 500001u) << sample.name;
  }
}

}  // namespace
