// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Mutated and cut files by the thousand, through everything that reads them.
#include <gtest/gtest.h>

#include <random>

#include "tvb/checker.h"
#include "tvb/play_order.h"
#include "tvb/player.h"
#include "tvb/writer.h"
#include "tvb_data.h"

namespace {

using tvb::Buffer;

Buffer Good(uint32_t seed) {
  std::mt19937 random(seed);
  tvb::Writer writer;
  writer.Opening(random() % 3, random() % 3);
  writer.FreshFrequency(1000000);
  writer.Hdr(9, Buffer{0xFF, 0x80});
  for (int i = 0; i < 8; ++i) {
    const Buffer data = tvb_data::Runs(1 + random() % 60, 9, random());
    const auto bits = static_cast<uint32_t>(8 * data.size() - random() % 8);
    writer.Encode(tvb::BlockChoice::As(static_cast<tvb::Encoding>(random() % 5)));
    if (i == 4) {
      writer.BeginLoop(1 + random() % 4);
    }
    writer.Sdr(bits, data, data, data);
  }
  writer.EndLoop();
  writer.RunTest(random() % 100000, std::chrono::microseconds(random() % 100000));
  writer.ClearPads();
  return writer.Finish();
}

Buffer Mutated(Buffer file, std::mt19937 &random) {
  for (uint32_t i = 0; i < 1 + random() % 4; ++i) {
    uint8_t &byte = file[random() % file.size()];
    byte = random() % 2 == 0 ? static_cast<uint8_t>(random())
                             : static_cast<uint8_t>(byte ^ 1u << random() % 8);
  }
  if (random() % 4 == 0) {
    file.resize(random() % file.size());
  }
  return file;
}

// Decodes all there is, in the order of playing; so many records at most.
uint64_t PlayThrough(const Buffer &file, const tvb::HeaderView &header) {
  tvb::PlayOrder order(file, header);
  uint64_t bytes = 0;
  for (int i = 0; i < 100; ++i) {
    const auto played = order.Next();
    if (!played) {
      break;
    }
    EXPECT_LE(played->pass, played->passes);
    for (const tvb::FieldView &field : played->record.fields) {
      if (field.block && played->record.bits() <= tvb::kMaxScanClocks) {
        bytes += tvb::DecodeBlock(file, *field.block).size();
      }
    }
  }
  return bytes;
}

TEST(TvbReadMutated, EverythingIsReadToAnEnd) {
  std::mt19937 random(7);
  uint64_t clean = 0;
  for (uint32_t seed = 0; seed < 20; ++seed) {
    const Buffer good = Good(seed);
    for (int i = 0; i < 500; ++i) {
      const Buffer file = Mutated(good, random);
      const tvb::HeaderView header = tvb::ReadHeader(file);
      uint64_t broken = 0;
      const auto result = tvb::CheckImage(file, [&](const tvb::Finding &finding) {
        EXPECT_FALSE(finding.message.empty());
        EXPECT_LE(finding.offset, file.size());
        broken += finding.severity == tvb::Severity::kBroken;
      });
      EXPECT_EQ(result.is_tvb, !header.fault);
      clean += broken == 0;
      if (!header.fault) {
        PlayThrough(file, header);
      }
    }
  }
  // Some of the bytes are data, which may be anything.
  EXPECT_GT(clean, 500u);
  EXPECT_LT(clean, 9000u);
}

TEST(TvbReadMutated, GoodFilesAreCleanAndEveryPrefixIsNot) {
  for (uint32_t seed = 0; seed < 20; ++seed) {
    const Buffer good = Good(seed);
    const auto ignore = [](const tvb::Finding &) {};
    EXPECT_EQ(tvb::CheckImage(good, ignore).errors, 0u);
    for (size_t size = 0; size < good.size(); ++size) {
      const Buffer cut(good.begin(), good.begin() + static_cast<long>(size));
      const tvb::CheckResult result = tvb::CheckImage(cut, ignore);
      EXPECT_LE(result.records, 20u);
      if (size < 15) {
        EXPECT_FALSE(result.is_tvb);
      }
    }
  }
}

TEST(TvbReadMutated, NoiseIsReadInLinearTime) {
  // Each of these records asks for more than the file has.
  Buffer file = {'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'b', 0, 'V', 1};
  const Buffer greedy = {'^', 64, 13, 0xFF, 0xFF, 0x07, 15, 3, 0x11, 23};
  for (int i = 0; i < 100000; ++i) {
    file.insert(file.end(), greedy.begin(), greedy.end());
  }
  const auto result = tvb::CheckImage(file, [](const tvb::Finding &) {});
  EXPECT_GT(result.errors, 0u);
  EXPECT_GT(result.unchecked, 0u);
}

}  // namespace
