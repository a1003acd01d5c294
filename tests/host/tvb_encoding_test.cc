// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The table of encodings: that none is left out, and what its rows say of themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tvb/block.h"
#include "tvb_data.h"

namespace {

using tvb::Buffer;

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    names.push_back(row.name);
  }
  return names;
}

TEST(TvbEncoding, TheModeBytesOfTheFormat) {
  EXPECT_STREQ(tvb::EncodingName(0), "raw");
  EXPECT_STREQ(tvb::EncodingName(1), "run-length");
  EXPECT_STREQ(tvb::EncodingName(2), "nibble");
  EXPECT_STREQ(tvb::EncodingName(3), "bit-coding");
  EXPECT_STREQ(tvb::EncodingName(4), "lzw");
  EXPECT_STREQ(tvb::EncodingName(0xFF), "unknown");
  EXPECT_EQ(tvb::FindEncoding(0xFF), nullptr);
}

// TVB_ENCODING_FILES: the files of tvb/encodings, each without its ending.
TEST(TvbEncoding, EveryFileIsARowAndEveryRowAFile) {
  std::istringstream files(TVB_ENCODING_FILES);
  std::vector<std::string> of_files;
  for (std::string name; files >> name;) {
    std::replace(name.begin(), name.end(), '_', '-');
    of_files.push_back(name);
  }
  std::vector<std::string> of_rows = Names();
  std::sort(of_files.begin(), of_files.end());
  std::sort(of_rows.begin(), of_rows.end());
  EXPECT_EQ(of_files, of_rows);
}

TEST(TvbEncoding, NoPayloadIsSmallerThanItsCodecSays) {
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    size_t smallest = SIZE_MAX;
    for (size_t size : {1, 2, 3, 4, 8, 100}) {
      for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
        Buffer payload;
        row.codec->encode(payload, sample.bytes, std::nullopt);
        smallest = std::min(smallest, payload.size());
      }
    }
    EXPECT_EQ(smallest, row.codec->min_size) << row.name;
  }
}

TEST(TvbEncoding, TwoBytesAreSmallestRaw) {
  EXPECT_TRUE(tvb::RawIsSmallest(0));
  EXPECT_TRUE(tvb::RawIsSmallest(2));
  EXPECT_FALSE(tvb::RawIsSmallest(3));
}

TEST(TvbEncoding, WhatHasAParameterSaysHowItIsCalledAndShown) {
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    EXPECT_EQ(row.codec->parameter_name == nullptr, row.codec->parameter_text == nullptr)
        << row.name;
  }
  EXPECT_EQ(tvb::codecs::kRaw.parameter_text, nullptr);
  EXPECT_EQ(tvb::codecs::kRunLength.parameter_text(0xA5), "escape 0xA5");
  EXPECT_EQ(tvb::codecs::kNibble.parameter_text(1), "pattern of 1 nibble");
  EXPECT_EQ(tvb::codecs::kBitCoding.parameter_text(0), "symbol 0x00");
  EXPECT_EQ(tvb::codecs::kLzw.parameter_text(3), "k 3");
}

}  // namespace
