// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// LZW streams: bytes, codes, the counter's wrap and clear codes.
#include <gtest/gtest.h>

#include "lzw_codes.h"
#include "tvb/block.h"
#include "tvb/error.h"
#include "tvb_data.h"
#include "tvb_reference.h"

namespace {

using tvb::Buffer;
using tvb_reference::LzwStream;

Buffer Encode(const Buffer &data, int k) {
  Buffer out;
  tvb::codecs::kLzw.encode(out, data, k);
  return out;
}

// Takes a stream of `data` apart and checks that it is one of `data` and ends where it should.
LzwStream Parts(const Buffer &data, int k, const Buffer &encoded) {
  tvb_reference::Input in(encoded);
  LzwStream stream = tvb_reference::Lzw(in);
  EXPECT_TRUE(in.AtEnd());
  EXPECT_EQ(stream.data, data) << "k " << k << ", " << data.size() << " bytes";
  return stream;
}

LzwStream Parts(const Buffer &data, int k) {
  return Parts(data, k, Encode(data, k));
}

LzwStream RestartingParts(const Buffer &data, int k, size_t every) {
  return Parts(data, k, lzw::Restarting(data, static_cast<uint32_t>(k), every));
}

TEST(TvbLzw, ShortStreams) {
  EXPECT_EQ(Encode({}, 0), Buffer({0x00, 0xFF, 0x01}));
  EXPECT_EQ(Encode({}, 3), Buffer({0x03, 0xFF, 0x01}));
  EXPECT_EQ(Encode({0x41}, 0), Buffer({0x00, 0x41, 0xFF, 0x01}));
  EXPECT_EQ(Encode({0x41, 0x41, 0x41}, 0), Buffer({0x00, 0x41, 0xFF, 0xFE, 0x03}));
  EXPECT_EQ(Encode({0x41, 0x42, 0x41, 0x42, 0x41, 0x42, 0x41}, 0),
            Buffer({0x00, 0x41, 0x42, 0xFE, 0xFF, 0xFD, 0x07}));
}

TEST(TvbLzw, TheStringBeingDefinedIsUsed) {
  EXPECT_EQ(Parts({0x41, 0x41, 0x41}, 0).codes, std::vector<uint32_t>({0x41, 257, 259}));
  EXPECT_EQ(Parts({0x41, 0x42, 0x41, 0x42, 0x41, 0x42, 0x41}, 0).codes,
            std::vector<uint32_t>({0x41, 0x42, 257, 259, 261}));
}

TEST(TvbLzw, AClearCodeStartsTheDictionaryAfresh) {
  EXPECT_EQ(lzw::Restarting({0x41, 0x42}, 0, 1), Buffer({0x00, 0x41, 0xFE, 0x85, 0xFE, 0x03}));
  EXPECT_EQ(RestartingParts({0x41, 0x42}, 0, 1).codes,
            std::vector<uint32_t>({0x41, 256, 0x42, 258}));
  EXPECT_EQ(RestartingParts(Buffer(8, 0x41), 0, 2).codes,
            std::vector<uint32_t>({0x41, 257, 256, 0x41, 257, 256, 0x41, 0x41, 259}));
}

TEST(TvbLzw, TheStreamWithoutRestartsIsTheEncoders) {
  for (size_t size : {0, 1, 2, 300, 5000}) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      EXPECT_EQ(Encode(sample.bytes, 1), lzw::Restarting(sample.bytes, 1, 0)) << sample.name;
    }
  }
}

TEST(TvbLzw, ThreeHundredBytesWrapTheSmallestDictionaryOnce) {
  Buffer data = tvb_data::WithoutPairs(300);
  LzwStream stream = Parts(data, 0);
  std::vector<uint32_t> expected(data.begin(), data.end());
  expected.push_back(302);
  EXPECT_EQ(stream.codes, expected);
  EXPECT_EQ(stream.wraps, 1u);
}

// The stream ends at each value of the counter around the first and the second wrap.
TEST(TvbLzw, StreamsEndRightAroundTheWrap) {
  for (int k = 0; k <= 3; ++k) {
    const size_t codes_to_wrap = (512u << k) - 257;
    for (size_t wraps : {1, 2}) {
      for (size_t size = wraps * codes_to_wrap - 4; size <= wraps * codes_to_wrap + 4; ++size) {
        LzwStream stream = Parts(tvb_data::WithoutPairs(size), k);
        ASSERT_EQ(stream.codes.size(), size + 1);
        EXPECT_EQ(stream.wraps, size / codes_to_wrap);
        EXPECT_EQ(stream.codes.back(), 257 + size % codes_to_wrap);
      }
    }
  }
}

// Strings that have a code when the counter wraps must not be used after it.
TEST(TvbLzw, RepeatingDataWrapsEveryDictionary) {
  for (int k = 0; k <= 3; ++k) {
    Buffer text = tvb_data::TextLike(200000, 3);
    EXPECT_GT(Parts(text, k).wraps, 2u) << "k " << k;
    Buffer runs = tvb_data::Runs(400000, 40, 3);
    EXPECT_GT(Parts(runs, k).wraps, 2u) << "k " << k;
    Parts(Buffer(100000, 0x00), k);
  }
}

TEST(TvbLzw, EveryWidthOfCodeIsCrossed) {
  for (size_t size = 250; size <= 260; ++size) {
    Parts(tvb_data::WithoutPairs(size), 3);
  }
  for (size_t size = 762; size <= 772; ++size) {
    Parts(tvb_data::WithoutPairs(size), 3);
  }
  for (size_t size = 1786; size <= 1796; ++size) {
    EXPECT_EQ(Parts(tvb_data::WithoutPairs(size), 3).wraps, 0u);
  }
}

TEST(TvbLzw, ClearsAndWrapsMix) {
  for (int k = 0; k <= 3; ++k) {
    const size_t codes_to_wrap = (512u << k) - 257;
    for (size_t clear_every : {size_t{3}, codes_to_wrap - 1, codes_to_wrap, codes_to_wrap + 1}) {
      RestartingParts(tvb_data::WithoutPairs(3 * codes_to_wrap + 2), k, clear_every);
      RestartingParts(tvb_data::TextLike(60000, 9), k, clear_every);
    }
  }
}

TEST(TvbLzw, OtherDictionarySizesAreRefusedAndNothingIsWritten) {
  for (int k : {-1, 4, 100}) {
    Buffer out = {0x55};
    EXPECT_THROW(tvb::codecs::kLzw.encode(out, Buffer{1, 2, 3}, k), tvb::Error);
    EXPECT_EQ(out, Buffer({0x55}));
  }
}

}  // namespace
