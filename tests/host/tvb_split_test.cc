// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "tvb/checker.h"
#include "tvb/play_order.h"
#include "tvb/seal.h"
#include "tvb/wait_splitter.h"
#include "tvb/writer.h"

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

tvb::SplitFile Split(const tvb::Buffer &image, uint64_t longest) {
  return tvb::SplitWaits(image, tvb::ReadHeader(image), longest);
}

// The clocks of each run-test in play order, and of each scan.
struct Played {
  std::vector<uint64_t> waits;
  std::vector<uint64_t> scans;
  uint64_t clocks = 0;
};

Played Play(const tvb::Buffer &image) {
  Played all;
  tvb::PlayOrder order(image, tvb::ReadHeader(image));
  while (const auto played = order.Next()) {
    EXPECT_FALSE(played->record.fault);
    all.clocks += played->clocks;
    if (played->record.Runs()) {
      all.waits.push_back(played->clocks);
    } else if (played->record.IsShift()) {
      all.scans.push_back(all.clocks);
    }
  }
  return all;
}

// Two scans, with a long wait of both kinds before and between them, and one in a loop.
tvb::Buffer LongFile() {
  tvb::Writer writer;
  writer.FreshFrequency(1000000);
  writer.RunTest(100, milliseconds(1));
  writer.Sir(8, tvb::Buffer{0x60});
  writer.RunTest(90005, microseconds(1045007));
  writer.Sdr(8, tvb::Buffer{0x5A}, tvb::Buffer{0x5A}, tvb::Buffer{0xFF});
  writer.BeginLoop(3);
  writer.RunTest(milliseconds(50));
  writer.Sdr(8, tvb::Buffer{0xA5});
  writer.EndLoop();
  return writer.Finish();
}

TEST(TvbSplit, KeepsTheClocksAndMakesEveryWaitShort) {
  const tvb::Buffer file = LongFile();
  const tvb::SplitFile split = Split(file, 20);
  EXPECT_EQ(split.split, 2u);
  EXPECT_EQ(split.longest_microseconds, 1135012u);
  const Played before = Play(file);
  const Played after = Play(split.image);
  EXPECT_EQ(after.scans, before.scans);
  EXPECT_EQ(after.clocks, before.clocks);
  // 4 x 20000 and 10005 cycles, 52 x 20 ms, 5 ms, 7 us; in each pass 20, 20 and 10 ms.
  EXPECT_EQ(after.waits.size(), 1 + 5 + 52 + 2 + 3 * 3u);
  for (const uint64_t clocks : after.waits) {
    EXPECT_LE(clocks, 20000u);
  }
  EXPECT_EQ(tvb::CheckImage(split.image, [](const tvb::Finding &) {}).errors, 0u);
}

TEST(TvbSplit, LeavesShortWaitsByteForByte) {
  const tvb::Buffer file = LongFile();
  const tvb::SplitFile same = Split(file, 2000);
  EXPECT_EQ(same.split, 0u);
  EXPECT_EQ(same.image, file);
  // Exactly as long as is allowed.
  tvb::Writer writer;
  writer.RunTest(milliseconds(20));
  const tvb::Buffer exact = writer.Finish();
  EXPECT_EQ(Split(exact, 20).image, exact);
  EXPECT_EQ(Split(exact, 19).split, 1u);
}

TEST(TvbSplit, TakesAMinuteAtOneKilohertzApart) {
  tvb::Writer writer;
  writer.FreshFrequency(1000);
  writer.RunTest(seconds(60));
  const tvb::SplitFile split = Split(writer.Finish(), 20);
  const Played played = Play(split.image);
  EXPECT_EQ(split.longest_microseconds, 60000000u);
  EXPECT_EQ(played.waits, std::vector<uint64_t>(3000, 20));
}

TEST(TvbSplit, SealsASealedFileAnew) {
  tvb::Buffer file = LongFile();
  EXPECT_EQ(tvb::SealOf(Split(file, 20).image).state, tvb::SealState::kNone);
  tvb::Seal(file);
  EXPECT_EQ(tvb::SealOf(Split(file, 20).image).state, tvb::SealState::kRight);
}

}  // namespace
