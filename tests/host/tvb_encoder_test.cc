// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The encoder of many shifts: bits that may be anything, and blocks that come again.
#include "tvb/block_encoder.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tvb/error.h"
#include "tvb/writer.h"

namespace {

TEST(TvbEncoder, FreeBitsNeverTouchTheOthers) {
  std::mt19937 random(2);
  for (int round = 0; round < 200; ++round) {
    tvb::Buffer data(1 + random() % 50);
    tvb::Buffer care(data.size());
    for (size_t i = 0; i < data.size(); ++i) {
      data[i] = static_cast<uint8_t>(random());
      care[i] = static_cast<uint8_t>(random() | (random() % 2 == 0 ? 0xFF : 0));
    }
    const auto versions = tvb::FreeBitVersions(data, care);
    ASSERT_EQ(versions.front(), data);
    for (const tvb::Buffer &version : versions) {
      ASSERT_EQ(version.size(), data.size());
      for (size_t i = 0; i < data.size(); ++i) {
        ASSERT_EQ((version[i] ^ data[i]) & care[i], 0);
      }
    }
  }
}

// Choosing again for what was chosen must choose the same: otherwise a file that is written back as
// SVF and compiled again would change.
TEST(TvbEncoder, AChoiceOfFreeBitsStays) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    const uint32_t bits = 17 + random() % 600;
    tvb::Buffer data((bits + 7) / 8);
    tvb::Buffer care(data.size());
    for (size_t i = 0; i < data.size(); ++i) {
      data[i] = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0x55);
      care[i] = static_cast<uint8_t>(random() % 4 == 0 ? random() : 0xFF);
    }
    const auto unused = static_cast<uint8_t>(0xFF00 >> (bits % 8 == 0 ? 8 : bits % 8));
    data.back() &= unused;
    care.back() &= unused;
    tvb::BlockEncoder encoder;
    tvb::Buffer first;
    encoder(first, bits, data, care);

    tvb::Cursor cursor(first, 0);
    const tvb::BlockView view = tvb::MeasureBlock(cursor, data.size(), false);
    ASSERT_TRUE(view.Exact());
    const tvb::Buffer chosen = tvb::DecodeBlock(first, view);
    for (size_t i = 0; i < data.size(); ++i) {
      ASSERT_EQ((chosen[i] ^ data[i]) & care[i], 0);
    }
    ASSERT_EQ(chosen.back() & ~unused, 0);
    tvb::Buffer again;
    encoder(again, bits, chosen, care);
    ASSERT_EQ(again, first);
    tvb::Buffer fixed;
    encoder(fixed, bits, chosen, {});
    ASSERT_EQ(fixed, first);
  }
}

TEST(TvbEncoder, RemembersBlocksWithoutMixingThemUp) {
  std::mt19937 random(4);
  tvb::BlockEncoder encoder;
  std::vector<tvb::Buffer> kinds;
  for (int i = 0; i < 700; ++i) {
    kinds.emplace_back(3 + random() % 40, static_cast<uint8_t>(random()));
    kinds.back()[random() % kinds.back().size()] ^= static_cast<uint8_t>(random());
  }
  for (int round = 0; round < 5000; ++round) {
    const tvb::Buffer &data = kinds[random() % kinds.size()];
    tvb::Buffer block;
    encoder(block, static_cast<uint32_t>(8 * data.size()), data, {});
    ASSERT_EQ(block, tvb::EncodeBlock(data));
  }
}

TEST(TvbEncoder, SmallDataIsNotChosen) {
  tvb::BlockEncoder encoder;
  tvb::Buffer block;
  encoder(block, 16, tvb::Buffer{0x12, 0x34}, tvb::Buffer{0xFF, 0x00});
  EXPECT_EQ(block, tvb::Buffer({0, 0x12, 0x34}));
}

// A shift says which of its bits may be chosen; without a word each is as given.
TEST(TvbEncoder, AShiftIsChosenFromAsItSays) {
  const tvb::Buffer data = {0x00, 0x00, 0x12, 0x00};
  const tvb::Buffer mask = {0xFF, 0xFF, 0x00, 0xFF};
  const auto record = [&](tvb::Bytes care, bool free_tdo) {
    tvb::Writer writer;
    writer.Take();
    tvb::Shift shift;
    shift.bits = 32;
    shift.tdi = data;
    shift.tdo = data;
    shift.mask = mask;
    shift.care = care;
    shift.free_tdo = free_tdo;
    writer.Scan(tvb::kSdr, shift);
    return writer.Take();
  };
  const tvb::Buffer stored = {3, 0x00, 0x22, 0x40};  // a bit for each byte that is 0
  const tvb::Buffer zeros = {2, 1, 0x00};            // a pattern of one nibble
  const auto expected = [](const tvb::Buffer &tdi, const tvb::Buffer &tdo) {
    tvb::Buffer body = {32, 15};
    tvb::Append(body, tdi);
    body.push_back(16);
    tvb::Append(body, tdo);
    tvb::Append(body, tvb::Buffer{17, 3, 0xFF, 0x20, 0x00, 23});
    tvb::Buffer whole;
    tvb::AppendRecord(whole, tvb::kSdr, body);
    return whole;
  };
  EXPECT_EQ(record({}, false), expected(stored, stored));
  EXPECT_EQ(record(mask, false), expected(zeros, stored));
  EXPECT_EQ(record({}, true), expected(stored, zeros));
  EXPECT_EQ(record(mask, true), expected(zeros, zeros));
}

TEST(TvbEncoder, WhatIsKnownOfTdiMustFitItsBits) {
  tvb::Writer writer;
  tvb::Shift shift;
  const tvb::Buffer data(2);
  const tvb::Buffer care(3);
  shift.bits = 16;
  shift.tdi = data;
  shift.care = care;
  EXPECT_THROW(writer.Scan(tvb::kSdr, shift), tvb::Error);
}

// A sink gets each record by itself, the header being another's concern.
TEST(TvbEncoder, AWriterWithASinkKeepsNothing) {
  std::vector<tvb::Buffer> records;
  tvb::Writer writer(tvb::FileHeader::Plain(), [&records](tvb::Bytes record) {
    records.emplace_back(record.begin(), record.end());
  });
  writer.Frequency(0);
  writer.Sir(8, tvb::Buffer{0x60});
  EXPECT_EQ(writer.size(), 4u + 7);
  EXPECT_EQ(writer.Take(), tvb::Buffer());
  EXPECT_EQ(writer.Finish(), tvb::Buffer());
  EXPECT_EQ(records, (std::vector<tvb::Buffer>{
                         {'^', 16, 7, 0}, {'^', 40, 14, 8, 15, 0x60, 23}, {'^', 16, 4, 0}}));
}

}  // namespace
