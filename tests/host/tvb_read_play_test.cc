// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The order in which records are played.
#include <gtest/gtest.h>

#include "image.h"
#include "tvb/play_order.h"

namespace {

using image::Bytes;

// "2:1/3" is record 2 in the first of three passes.
std::string Order(const Bytes &records, size_t most = 100) {
  const Bytes file = image::Join({image::Header(), records});
  tvb::PlayOrder order(file, tvb::ReadHeader(file));
  std::string text;
  while (auto played = order.Next()) {
    text += (text.empty() ? "" : " ") + std::to_string(played->record.index);
    if (played->loop != 0) {
      text += ":" + std::to_string(played->pass) + "/" + std::to_string(played->passes);
    }
    EXPECT_LE(played->step, most);
    if (played->step == most) {
      return text;
    }
  }
  return text;
}

Bytes One() {
  return image::Frequency(1);
}

TEST(TvbPlayOrder, LoopBodyIsPlayedSoOften) {
  EXPECT_EQ(Order(image::Join({One(), image::Loop(3), One(), One(), image::EndLoop(), One()})),
            "1 2 3:1/3 4:1/3 5:1/3 3:2/3 4:2/3 5:2/3 3:3/3 4:3/3 5:3/3 6");
}

TEST(TvbPlayOrder, LoopOfNoneOneOrANegativeCountIsPlayedOnce) {
  const Bytes negative = image::Record(image::kLoop, image::Negative(-5));
  for (const Bytes &loop : {image::Loop(0), image::Loop(1), negative}) {
    EXPECT_EQ(Order(image::Join({loop, One(), image::EndLoop(), One()})), "1 2:1/1 3:1/1 4");
  }
}

TEST(TvbPlayOrder, EndWithoutALoopDoesNothing) {
  EXPECT_EQ(Order(image::Join({image::EndLoop(), One()})), "1 2");
}

TEST(TvbPlayOrder, LoopInsideALoopTakesTheOneCounter) {
  const Bytes records = image::Join(
      {image::Loop(5), image::Loop(2), One(), image::EndLoop(), image::EndLoop(), One()});
  EXPECT_EQ(Order(records), "1 2 3:1/2 4:1/2 3:2/2 4:2/2 5 6");
}

TEST(TvbPlayOrder, LongLoopsAreFollowedLazily) {
  EXPECT_EQ(Order(image::Join({image::Loop(0x7FFFFFFF), One(), image::EndLoop()}), 4),
            "1 2:1/2147483647 3:1/2147483647 2:2/2147483647");
}

TEST(TvbPlayOrder, EndsAtAFaultAndAtWhatIsNoRecord) {
  EXPECT_EQ(Order(image::Join({One(), image::Record(2, {}), One()})), "1 2");
  EXPECT_EQ(Order(image::Join({One(), {'x'}, One()})), "1");
}

TEST(TvbPlayOrder, PadsInForce) {
  const Bytes file = image::Join({image::Header(), image::Pad(image::kHir, 8, {1}),
                                  image::Pad(image::kTir, 7, {1}), image::Pad(image::kHdr, 6, {1}),
                                  image::Pad(image::kTdr, 5, {1}), image::Pad(image::kHir, 0)});
  tvb::PlayOrder order(file, tvb::ReadHeader(file));
  EXPECT_EQ(order.pads().hir, 0u);
  order.Next();
  EXPECT_EQ(order.pads().header(image::kSir), 8u);
  while (order.Next()) {
  }
  EXPECT_EQ(order.pads().header(image::kSir), 0u);
  EXPECT_EQ(order.pads().trailer(image::kSir), 7u);
  EXPECT_EQ(order.pads().header(image::kSdr), 6u);
  EXPECT_EQ(order.pads().trailer(image::kSdr), 5u);
}

// The numbers of the records that hold the scans, as far as `most`, and 0 for no scan.
std::vector<uint64_t> FoundScans(const Bytes &records, uint64_t most) {
  const Bytes file = image::Join({image::Header(), records});
  std::vector<uint64_t> indexes;
  for (uint64_t number = 1; number <= most; ++number) {
    const auto record = tvb::FindScan(file, tvb::ReadHeader(file), number);
    indexes.push_back(record ? record->index : 0);
  }
  return indexes;
}

// The same by playing.
std::vector<uint64_t> PlayedScans(const Bytes &records, uint64_t most) {
  const Bytes file = image::Join({image::Header(), records});
  tvb::PlayOrder order(file, tvb::ReadHeader(file));
  std::vector<uint64_t> indexes;
  while (const auto played = order.Next()) {
    if (played->record.IsShift() && !played->record.fault) {
      indexes.push_back(played->record.index);
    }
  }
  indexes.resize(most);
  return indexes;
}

Bytes OneScan() {
  return image::Sdr(8, {0x55});
}

TEST(TvbFindScan, CountsTheScansOfEveryPass) {
  const Bytes records = image::Join(
      {OneScan(), image::Loop(3), OneScan(), One(), OneScan(), image::EndLoop(), One(), OneScan()});
  EXPECT_EQ(FoundScans(records, 9), (std::vector<uint64_t>{1, 3, 5, 3, 5, 3, 5, 8, 0}));
}

TEST(TvbFindScan, TakesNoLongerForLongLoops) {
  const Bytes records =
      image::Join({image::Loop(0x7FFFFFFF), OneScan(), OneScan(), image::EndLoop(), OneScan()});
  const Bytes file = image::Join({image::Header(), records});
  const tvb::HeaderView header = tvb::ReadHeader(file);
  EXPECT_EQ(tvb::FindScan(file, header, 4294967293)->index, 2u);
  EXPECT_EQ(tvb::FindScan(file, header, 4294967294)->index, 3u);
  EXPECT_EQ(tvb::FindScan(file, header, 4294967295)->index, 5u);
  EXPECT_FALSE(tvb::FindScan(file, header, 4294967296));
}

TEST(TvbFindScan, IsTheOrderInWhichTheyArePlayed) {
  const Bytes pieces[] = {OneScan(), image::Loop(2), image::Loop(3), image::EndLoop(),
                          image::Record(2, {})};
  for (uint32_t choice = 0; choice < 16384; ++choice) {
    Bytes records;
    for (uint32_t rest = choice; rest != 0; rest /= 5) {
      records = image::Join({records, pieces[rest % 5]});
    }
    ASSERT_EQ(FoundScans(records, 20), PlayedScans(records, 20)) << choice;
  }
}

}  // namespace
