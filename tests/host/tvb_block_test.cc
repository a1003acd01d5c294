// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The block encodings, byte for byte, and the choice between them.
#include <gtest/gtest.h>

#include <chrono>

#include "tvb/block.h"
#include "tvb/error.h"
#include "tvb/number.h"
#include "tvb_data.h"
#include "tvb_reference.h"

namespace {

using tvb::BlockChoice;
using tvb::Buffer;
using tvb::EncodeBlock;
using tvb::Encoding;

Buffer Number(uint32_t value) {
  Buffer out;
  tvb::AppendNumber(out, value);
  EXPECT_EQ(tvb::NumberSize(value), out.size());
  return out;
}

Buffer RunLength(const Buffer &data, int escape) {
  return EncodeBlock(data, BlockChoice::With(Encoding::kRunLength, escape));
}

Buffer Nibble(const Buffer &data, int64_t nibbles) {
  return EncodeBlock(data, BlockChoice::With(Encoding::kNibble, nibbles));
}

Buffer BitCoding(const Buffer &data, int symbol) {
  return EncodeBlock(data, BlockChoice::With(Encoding::kBitCoding, symbol));
}

// The parameter that an encoding chooses by itself.
int64_t Chosen(const Buffer &data, Encoding encoding) {
  const Buffer block = EncodeBlock(data, BlockChoice::As(encoding));
  return tvb::Cursor(block, 1).Number().value;
}

bool IsPattern(const Buffer &data, int64_t nibbles) {
  try {
    Nibble(data, nibbles);
    return true;
  } catch (const tvb::Error &) {
    return false;
  }
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
  EXPECT_EQ(Number(tvb::kMaxNumber), Buffer({0xFF, 0xFF, 0xFF, 0xFF, 0x07}));
  EXPECT_EQ(Number(4294967295), Buffer({0xFF, 0xFF, 0xFF, 0xFF, 0x0F}));
}

TEST(TvbBlock, RawIsTheBytesAfterTheModeByte) {
  EXPECT_EQ(EncodeBlock(Buffer{0x12, 0x34, 0x56}, BlockChoice::As(Encoding::kRaw)),
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
  EXPECT_EQ(Chosen(data, Encoding::kRunLength), 2);
  EXPECT_EQ(Chosen({9, 9, 9, 9, 9, 0, 0, 0, 0, 0}, Encoding::kRunLength), 0);
  for (const tvb_data::Sample &sample : tvb_data::Samples(600)) {
    size_t best = EncodeBlock(sample.bytes, BlockChoice::As(Encoding::kRunLength)).size();
    for (int escape = 0; escape < 256; ++escape) {
      EXPECT_LE(best, RunLength(sample.bytes, escape).size()) << sample.name;
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
  EXPECT_THROW(Nibble(five, 4), tvb::Error);
  EXPECT_THROW(Nibble({0x12, 0x31, 0x23, 0x12}, 3), tvb::Error);
  EXPECT_THROW(Nibble(five, 0), tvb::Error);
  EXPECT_THROW(Nibble({}, 1), tvb::Error);
  EXPECT_THROW(Nibble(five, -1), tvb::Error);
  EXPECT_EQ(Nibble(five, 10), Buffer({0x02, 0x0A, 0x12, 0x34, 0x12, 0x34, 0x12}));
}

TEST(TvbBlock, TheShortestPatternIsFound) {
  EXPECT_EQ(Chosen({}, Encoding::kNibble), 0);
  EXPECT_EQ(Chosen({0x55, 0x55}, Encoding::kNibble), 1);
  EXPECT_EQ(Chosen({0x5A, 0x5A}, Encoding::kNibble), 2);
  EXPECT_EQ(Chosen({0x12, 0x31, 0x23}, Encoding::kNibble), 3);
  EXPECT_EQ(Chosen({0x12, 0x34, 0x12, 0x34, 0x12}, Encoding::kNibble), 10);
  for (size_t size : {1, 2, 6, 15, 30, 63, 120}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      int64_t shortest = 1;
      while (!IsPattern(sample.bytes, shortest)) {
        ++shortest;
      }
      EXPECT_EQ(Chosen(sample.bytes, Encoding::kNibble), shortest) << sample.name << " " << size;
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
  EXPECT_EQ(Chosen({1, 2, 3, 2, 1, 2}, Encoding::kBitCoding), 2);
  EXPECT_EQ(Chosen({7, 3}, Encoding::kBitCoding), 3);
  EXPECT_EQ(EncodeBlock(Buffer{1, 2, 2}, BlockChoice::As(Encoding::kBitCoding)),
            Buffer({0x03, 0x02, 0x80, 0x80}));
}

TEST(TvbBlock, TheSmallestIsTakenAndRawWhereNoneIsSmaller) {
  EXPECT_EQ(EncodeBlock({}), Buffer({0x00}));
  EXPECT_EQ(EncodeBlock(Buffer{0x60}), Buffer({0x00, 0x60}));
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
      for (const tvb::EncodingRow &row : tvb::Encodings()) {
        Buffer block = EncodeBlock(sample.bytes, BlockChoice::As(row.encoding));
        EXPECT_EQ(block[0], static_cast<int>(row.encoding));
        EXPECT_LE(smallest, block.size()) << sample.name << " " << size << " " << row.name;
      }
      for (int k = 0; k <= 3; ++k) {
        Buffer block = EncodeBlock(sample.bytes, BlockChoice::With(Encoding::kLzw, k));
        EXPECT_EQ(block[0], 4);
        EXPECT_EQ(block[1], k);
        EXPECT_LE(smallest, block.size()) << sample.name << " " << size << " k " << k;
      }
    }
  }
}

// Data that an encoding makes a few bytes smaller or larger: random bytes, some of them from a
// small set, some copied from before.
Buffer HardlyCompressible(size_t size, std::mt19937 &random) {
  const unsigned gap = 1 + random() % 40;
  Buffer data;
  while (data.size() < size) {
    if (random() % gap != 0 || data.size() < 4) {
      data.push_back(static_cast<uint8_t>(random() % 3 == 0 ? random() % 4 : random()));
    } else {
      const size_t from = random() % (data.size() - 3);
      const Buffer copy(data.begin() + static_cast<ptrdiff_t>(from), data.begin() + from + 2);
      data.insert(data.end(), copy.begin(), copy.end());
    }
  }
  data.resize(size);
  return data;
}

// Every block that there can be of the data, in the order in which equals are preferred.
std::vector<Buffer> AllBlocks(const Buffer &data) {
  std::vector<Buffer> blocks = {EncodeBlock(data, BlockChoice::As(Encoding::kRaw))};
  for (int escape = 0; escape <= 0xFF; ++escape) {
    blocks.push_back(RunLength(data, escape));
  }
  blocks.push_back(EncodeBlock(data, BlockChoice::As(Encoding::kNibble)));
  for (int symbol = 0; symbol <= 0xFF; ++symbol) {
    blocks.push_back(BitCoding(data, symbol));
  }
  for (int k = 0; k <= 3; ++k) {
    blocks.push_back(EncodeBlock(data, BlockChoice::With(Encoding::kLzw, k)));
  }
  return blocks;
}

void ExpectFirstSmallest(const Buffer &data, const std::string &name) {
  const std::vector<Buffer> all = AllBlocks(data);
  const auto smaller = [](const Buffer &a, const Buffer &b) { return a.size() < b.size(); };
  ASSERT_EQ(EncodeBlock(data), *std::min_element(all.begin(), all.end(), smaller))
      << name << " " << data.size();
}

TEST(TvbBlock, TheFirstSmallestOfAllBlocksIsTaken) {
  for (size_t size : {1, 2, 3, 4, 5, 6, 7, 8, 13, 16, 30, 64, 100, 254, 255, 256, 257, 300}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      ExpectFirstSmallest(sample.bytes, sample.name);
    }
  }
  std::mt19937 random(4);
  for (int round = 0; round < 500; ++round) {
    ExpectFirstSmallest(HardlyCompressible(1 + random() % 400, random), "hardly compressible");
  }
  for (size_t size : {764, 770, 1788, 1794, 3836, 3842, 5000}) {
    ExpectFirstSmallest(HardlyCompressible(size, random), "hardly compressible");
  }
}

TEST(TvbBlock, BelowALimitIsThePayloadItselfOrNothing) {
  for (size_t size : {0, 1, 2, 3, 4, 16, 100, 256, 300, 800, 9000}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      for (const tvb::EncodingRow &row : tvb::Encodings()) {
        Buffer payload;
        row.codec->encode(payload, sample.bytes, std::nullopt);
        for (size_t limit : {size_t{0}, payload.size() / 2, payload.size()}) {
          Buffer out = {0x55};
          EXPECT_FALSE(row.codec->encode_below(out, sample.bytes, limit)) << row.name;
          EXPECT_EQ(out, Buffer({0x55})) << row.name << " " << sample.name << " " << size;
        }
        for (size_t limit : {payload.size() + 1, 2 * payload.size() + 9, SIZE_MAX}) {
          Buffer out;
          EXPECT_TRUE(row.codec->encode_below(out, sample.bytes, limit)) << row.name;
          EXPECT_EQ(out, payload) << row.name << " " << sample.name << " " << size;
        }
      }
    }
  }
}

TEST(TvbBlock, BadChoicesAreRefused) {
  const Buffer one = {1};
  EXPECT_THROW(EncodeBlock(one, BlockChoice::With(Encoding::kLzw, 4)), tvb::Error);
  EXPECT_THROW(EncodeBlock(one, BlockChoice::With(Encoding::kLzw, -1)), tvb::Error);
  EXPECT_THROW(EncodeBlock(one, BlockChoice::With(Encoding::kRaw, 1)), tvb::Error);
  EXPECT_THROW(EncodeBlock(one, BlockChoice{std::nullopt, 1}), tvb::Error);
  EXPECT_THROW(EncodeBlock(one, BlockChoice::As(static_cast<Encoding>(200))), tvb::Error);
  for (int parameter : {-1, 256}) {
    EXPECT_THROW(RunLength(one, parameter), tvb::Error);
    EXPECT_THROW(BitCoding(one, parameter), tvb::Error);
  }
}

TEST(TvbBlock, EveryEncodingIsReadBackByASecondReader) {
  for (size_t size : {1, 2, 3, 8, 15, 129, 700, 5000}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      for (const tvb::EncodingRow &row : tvb::Encodings()) {
        tvb_reference::Input in(EncodeBlock(sample.bytes, BlockChoice::As(row.encoding)));
        EXPECT_EQ(tvb_reference::Block(in, size), sample.bytes) << sample.name << " " << row.name;
        EXPECT_TRUE(in.AtEnd()) << sample.name << " " << size << " " << row.name;
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
