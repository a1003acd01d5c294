// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the writer keeps track of and what it refuses.
#include <gtest/gtest.h>

#include "tvb/writer.h"

namespace {

using tvb::Buffer;
using tvb::Error;
using tvb::Writer;
using namespace std::chrono_literals;

// Runs `use`, which must throw an Error that speaks of `word`, and checks that it wrote nothing.
template <typename Use>
void ExpectRefused(Writer &writer, const std::string &word, Use use) {
  uint64_t size = writer.size();
  try {
    use();
    ADD_FAILURE() << "taken: " << word;
  } catch (const Error &error) {
    EXPECT_NE(std::string(error.what()).find(word), std::string::npos) << error.what();
  }
  EXPECT_EQ(writer.size(), size);
}

TEST(TvbWriter, RegisterDataMustFitItsBits) {
  Writer w;
  ExpectRefused(w, "TDI of 9 bits takes 2 bytes, not 1", [&] { w.Sir(9, Buffer{1}); });
  ExpectRefused(w, "TDI of 8 bits takes 1 bytes, not 0", [&] { w.Sdr(8, {}); });
  ExpectRefused(w, "TDI of 0 bits takes 0 bytes, not 1", [&] { w.Sdr(0, Buffer{1}); });
  ExpectRefused(w, "TDO of 8 bits", [&] { w.Sdr(8, Buffer{1}, Buffer{1, 2}); });
  ExpectRefused(w, "MASK of 8 bits", [&] { w.Sdr(8, Buffer{1}, Buffer{1}, Buffer{1, 2}); });
  ExpectRefused(w, "header or trailer", [&] { w.Hir(8, {}); });
  ExpectRefused(w, "header or trailer", [&] { w.Tdr(0, Buffer{1}); });
}

TEST(TvbWriter, AMaskNeedsSomethingToCompareWith) {
  Writer w;
  ExpectRefused(w, "MASK without TDO", [&] { w.Sdr(8, Buffer{1}, {}, Buffer{0xFF}); });
}

TEST(TvbWriter, LoopsDoNotNest) {
  Writer w;
  ExpectRefused(w, "no loop is open", [&] { w.EndLoop(); });
  ExpectRefused(w, "1 to 2^31 - 1 times, not 0", [&] { w.BeginLoop(0); });
  ExpectRefused(w, "1 to 2^31 - 1 times", [&] { w.BeginLoop(0x80000000); });
  w.BeginLoop(2);
  ExpectRefused(w, "do not nest", [&] { w.BeginLoop(2); });
  ExpectRefused(w, "still open", [&] { w.Finish(); });
  ExpectRefused(w, "still open", [&] { w.FinishUnguarded(); });
  w.EndLoop();
  w.BeginLoop(0x7FFFFFFF);
  w.EndLoop();
  EXPECT_FALSE(w.Finish().empty());
}

TEST(TvbWriter, TheOpeningComesFirst) {
  Writer w;
  ExpectRefused(w, "BYPASS", [&] { w.Opening(1, 1, 0xFF); });
  ExpectRefused(w, "so many devices", [&] { w.Opening(0xFFFFFFFF, 1); });
  ExpectRefused(w, "so many devices", [&] { w.Opening(1, 0xFFFFFFFF); });
  w.Opening(1, 1);
  ExpectRefused(w, "first record only", [&] { w.Opening(1, 1); });
  Writer other;
  other.Frequency(1000);
  ExpectRefused(other, "first record only", [&] { other.Opening(0, 0); });
}

TEST(TvbWriter, ReservedOpcodesAreFour) {
  Writer w;
  for (int opcode = 0; opcode < 256; ++opcode) {
    if (opcode == 1 || opcode == 5 || opcode == 6 || opcode == 19) {
      EXPECT_NO_THROW(w.Reserved(static_cast<uint8_t>(opcode), {}));
    } else {
      ExpectRefused(w, "1, 5, 6 and 19", [&] { w.Reserved(static_cast<uint8_t>(opcode), {}); });
    }
  }
}

TEST(TvbWriter, FrequenciesAreOf31Bits) {
  Writer w;
  ExpectRefused(w, "2^31", [&] { w.Frequency(0x80000000); });
  ExpectRefused(w, "2^31", [&] { w.FreshFrequency(0x80000000); });
  ExpectRefused(w, "not 0", [&] { w.FreshFrequency(0); });
}

TEST(TvbWriter, ABadEncodingIsRefusedAtOnce) {
  Writer w;
  ExpectRefused(w, "0 to 3", [&] { w.Encode(tvb::BlockChoice::With(tvb::Encoding::kLzw, 4)); });
  w.Sdr(8, Buffer{1});
}

TEST(TvbWriter, NothingFollowsTheEnd) {
  Writer w;
  w.Finish();
  ExpectRefused(w, "finished", [&] { w.Sir(8, Buffer{1}); });
  ExpectRefused(w, "finished", [&] { w.RunTest(1); });
  ExpectRefused(w, "finished", [&] { w.ClearPads(); });
  ExpectRefused(w, "finished", [&] { w.FreshFrequency(1); });
  ExpectRefused(w, "finished", [&] { w.Finish(); });
  ExpectRefused(w, "finished", [&] { w.FinishUnguarded(); });
}

// The last field before the end tag of a run-test of 32769 microseconds: is there an extra cycle?
bool AddsACycle(Writer &w) {
  w.Take();
  w.RunTest(32769us);
  Buffer record = w.Take();
  return record[record.size() - 3] == 20;
}

TEST(TvbWriter, ATimeIsExactWhereTheFrequencyIsCertain) {
  Writer w;
  EXPECT_TRUE(AddsACycle(w)) << "an earlier file may have left any frequency";
  w.Frequency(1000000);
  EXPECT_TRUE(AddsACycle(w)) << "a lower one may be left";
  w.FreshFrequency(2000000);
  EXPECT_FALSE(AddsACycle(w));
  w.Frequency(1234567);
  EXPECT_TRUE(AddsACycle(w)) << "no whole number of kHz";
  w.Frequency(2000000);
  EXPECT_TRUE(AddsACycle(w)) << "the lowest stays";
  w.Frequency(0);
  EXPECT_FALSE(AddsACycle(w)) << "the player takes 1 MHz";
  w.BeginLoop(2);
  EXPECT_TRUE(AddsACycle(w)) << "the second pass may be at another frequency";
  w.EndLoop();
}

TEST(TvbWriter, RunTestsOfMoreClocksThanThePlayerCountsAreRefused) {
  Writer w;
  ExpectRefused(w, "several run-tests", [&] { w.RunTest(0x80000000); });
  ExpectRefused(w, "several run-tests", [&] { w.RunTest(std::chrono::hours(24 * 30)); });
  ExpectRefused(w, "less than no time", [&] { w.RunTest(-1us); });
  w.RunTest(std::chrono::hours(1));  // at what frequency nobody knows
  w.Frequency(1000000);
  ExpectRefused(w, "at 1000000 Hz", [&] { w.RunTest(std::chrono::hours(1)); });
  ExpectRefused(w, "at 1000000 Hz", [&] { w.RunTest(0x7FFFFFFF, 1us); });
  w.RunTest(0x7FFFFFFF - 1, 1us);
  w.Frequency(1000);
  w.RunTest(std::chrono::hours(1));
  w.Frequency(0);
  ExpectRefused(w, "at 1000000 Hz", [&] { w.RunTest(std::chrono::hours(1)); });
}

// An unset frequency becomes 1 MHz with the first run-test, and a higher one cannot raise it.
TEST(TvbWriter, TheDefaultFrequencyStays) {
  Writer w;
  w.Frequency(0);
  w.RunTest(1);
  w.Frequency(50000000);
  EXPECT_FALSE(AddsACycle(w));
  w.RunTest(std::chrono::minutes(30));
}

TEST(TvbWriter, AFileCanBeTakenInPieces) {
  auto write = [](Writer &w, auto between) {
    w.Opening(1, 2);
    between();
    w.FreshFrequency(1000000);
    w.BeginLoop(3);
    between();
    w.Sdr(16, Buffer{1, 2}, Buffer{3, 4}, Buffer{5, 6});
    w.EndLoop();
    between();
  };
  Writer whole;
  write(whole, [] {});
  const uint64_t size = whole.size();
  Buffer expected = whole.Finish();
  EXPECT_EQ(size + 4, expected.size());

  Writer w;
  Buffer pieces;
  write(w, [&] { tvb::Append(pieces, w.Take()); });
  EXPECT_EQ(w.size(), size);
  EXPECT_EQ(pieces.size(), size);
  tvb::Append(pieces, w.Finish());
  EXPECT_EQ(pieces, expected);
  EXPECT_EQ(w.size(), expected.size());
}

}  // namespace
