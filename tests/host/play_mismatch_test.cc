// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/mismatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "play_bench.h"
#include "tvb/play_order.h"

namespace {

using test::FileBytes;
using test::PlayBench;
using testing::HasSubstr;
using testing::Not;

constexpr uint32_t kIdcode = 0x0A014C35;

void IdcodeCompare(tvb::Writer &writer, uint32_t mask = 0xFFFFFFFF) {
  writer.Sir(8, tvb::Buffer{0x60});
  writer.Sdr(32, FileBytes(0, 32), FileBytes(kIdcode, 32), FileBytes(mask, 32));
}

// A file of an IDCODE compare through pads, then a loop of three scans of 300 bits.
tvb::Buffer LoopFile() {
  tvb::Writer writer;
  writer.Opening(1, 2);
  writer.Hdr(2, tvb::Buffer{0x00});
  writer.Tdr(1, tvb::Buffer{0x80});
  IdcodeCompare(writer);
  writer.BeginLoop(3);
  tvb::Buffer data(38, 0x5A);
  data.back() = 0x50;
  writer.Sdr(300, data, data, tvb::Buffer(38, 0xF0));
  writer.EndLoop();
  writer.ClearPads();
  return writer.Finish();
}

// Plays a file to an echo with one bit inverted.
class PlayMismatch : public ::testing::Test {
 protected:
  static std::optional<tool::Mismatch> Fail(const tvb::Buffer &image, uint64_t scan, uint64_t bit) {
    PlayBench bench(image);
    tool::EchoTarget echo(bench.playhead);
    tool::FlippedTarget flipped(echo, bench.playhead, scan, bit);
    bench.lines.Connect(flipped);
    bench.Begin();
    const bool held = bench.Play();
    EXPECT_TRUE(flipped.was_there());
    EXPECT_FALSE(held);
    return bench.Mismatch(flipped);
  }
};

TEST_F(PlayMismatch, AnEchoHoldsEveryComparison) {
  PlayBench bench(LoopFile());
  tool::EchoTarget echo(bench.playhead);
  bench.lines.Connect(echo);
  bench.Begin();
  EXPECT_EQ(bench.playhead.scan(), nullptr);
  EXPECT_TRUE(bench.Play());
  EXPECT_EQ(bench.playhead.scans(), 6u);
  EXPECT_EQ(bench.playhead.compared_scans(), 4u);
  EXPECT_EQ(bench.playhead.compared_dr_scans(), 4u);
  EXPECT_EQ(bench.lines.counts().all_reads(), 32u + 3 * 150 + 3 * 2);
}

TEST_F(PlayMismatch, TellsRecordRegisterBitAndBothValues) {
  const auto mismatch = Fail(LoopFile(), 3, 29);
  ASSERT_TRUE(mismatch);
  EXPECT_EQ(mismatch->record, 5u);
  EXPECT_EQ(mismatch->scan, 3u);
  EXPECT_EQ(mismatch->bit, 29u);
  EXPECT_EQ(mismatch->header, 2u);
  EXPECT_EQ(mismatch->trailer, 1u);
  EXPECT_EQ(mismatch->expected.Hex(), "0A014C35");
  EXPECT_EQ(mismatch->read.Hex(), "2A014C35");
  EXPECT_EQ(tool::MismatchSentence(*mismatch),
            "the comparison failed in DR scan 3, bit 29: expected 0, read 1");
  const std::string detail = tool::MismatchDetail(*mismatch);
  EXPECT_THAT(detail, HasSubstr("DR, 32 bits, after 2 bits of header, before 1 bit of trailer\n"));
  EXPECT_THAT(detail, HasSubstr("1 of 32 bits compared differ\n"));
  EXPECT_THAT(detail, HasSubstr("the right part (0xA014C35) in revision 2"));
  EXPECT_THAT(detail, Not(HasSubstr("loop")));
  EXPECT_THAT(detail, Not(HasSubstr("stuck")));
}

TEST_F(PlayMismatch, TellsThePassOfTheLoopAndShowsTheRestOfTheScan) {
  const auto mismatch = Fail(LoopFile(), 5, 130);
  ASSERT_TRUE(mismatch);
  EXPECT_EQ(mismatch->record, 7u);
  EXPECT_EQ(mismatch->loop, 6u);
  EXPECT_EQ(mismatch->pass, 2u);
  EXPECT_EQ(mismatch->passes, 3u);
  EXPECT_EQ(mismatch->read.size(), 300u);
  EXPECT_EQ((mismatch->read ^ mismatch->expected).Ones(), 1u);
  const std::string detail = tool::MismatchDetail(*mismatch);
  EXPECT_THAT(detail, HasSubstr("pass 2 of 3 of the loop of record 6\n"));
  EXPECT_THAT(detail, HasSubstr("  bits 256 to 299\n"));
  EXPECT_THAT(detail, HasSubstr("  differs   00000000000000000000000000000004\n"));
  EXPECT_THAT(detail, Not(HasSubstr("IDCODE")));
}

TEST_F(PlayMismatch, ShowsOfALongScanWhatDiffers) {
  tvb::Writer writer;
  const tvb::Buffer ones(2000, 0xFF);
  writer.Sdr(16000, ones, ones, ones);
  const auto mismatch = Fail(writer.Finish(), 1, 12800);
  ASSERT_TRUE(mismatch);
  const std::string detail = tool::MismatchDetail(*mismatch);
  EXPECT_THAT(detail, HasSubstr("bits 12800 to 12927\n"));
  EXPECT_THAT(detail, Not(HasSubstr("bits 0 to")));
  EXPECT_LT(detail.size(), 500u);
}

// A target whose TDO never changes.
class StuckTarget : public tool::Target {
 public:
  explicit StuckTarget(bool level) : level_(level) {}
  void Write(tool::Line, bool) override {}
  bool Tdo() const override {
    return level_;
  }

 private:
  bool level_;
};

std::string DetailOfStuck(const tvb::Buffer &image, bool level) {
  PlayBench bench(image);
  StuckTarget target(level);
  bench.lines.Connect(target);
  bench.Begin();
  EXPECT_FALSE(bench.Play());
  const auto mismatch = bench.Mismatch(target);
  return mismatch ? tool::MismatchDetail(*mismatch) : "none";
}

TEST_F(PlayMismatch, TellsThatTdoIsStuck) {
  tvb::Writer idcode;
  IdcodeCompare(idcode);
  const tvb::Buffer image = idcode.Finish();
  EXPECT_THAT(DetailOfStuck(image, false),
              HasSubstr("TDO stuck at 0: every bit that this scan compares reads 0\n"));
  EXPECT_THAT(DetailOfStuck(image, true),
              HasSubstr("TDO stuck at 1: every bit that this scan compares reads 1\n"));
  EXPECT_THAT(DetailOfStuck(image, true), Not(HasSubstr("IDCODE")));

  tvb::Writer after_zeros;
  after_zeros.Sdr(40, tvb::Buffer(5), tvb::Buffer(5), tvb::Buffer(5, 0xFF));
  IdcodeCompare(after_zeros);
  EXPECT_THAT(DetailOfStuck(after_zeros.Finish(), false),
              HasSubstr("TDO stuck at 0: all 41 reads so far were 0\n"));
}

TEST_F(PlayMismatch, DoesNotCallAFewBitsStuck) {
  tvb::Writer writer;
  writer.Sdr(8, tvb::Buffer{0}, tvb::Buffer{0xE0}, tvb::Buffer{0xE0});
  EXPECT_THAT(DetailOfStuck(writer.Finish(), false), Not(HasSubstr("stuck")));
}

TEST_F(PlayMismatch, DoesNotTakeALaterScanForAnIdcode) {
  tvb::Writer writer;
  writer.Sdr(8, tvb::Buffer{0}, tvb::Buffer{0x55}, tvb::Buffer{0xFF});
  writer.Sir(8, tvb::Buffer{0x11});
  writer.Sdr(32, FileBytes(0, 32), FileBytes(kIdcode, 32), FileBytes(0xFFFFFFFF, 32));
  const auto mismatch = Fail(writer.Finish(), 3, 28);
  ASSERT_TRUE(mismatch);
  EXPECT_THAT(tool::MismatchDetail(*mismatch), Not(HasSubstr("IDCODE")));
}

TEST(PlayPlayhead, FindsTheRecordsOfALoopAgain) {
  tvb::Writer writer;
  writer.BeginLoop(2);
  writer.Sdr(8, tvb::Buffer{1});
  writer.RunTest(5);
  writer.Sdr(8, tvb::Buffer{2});
  writer.EndLoop();
  PlayBench bench(writer.Finish());
  tool::EchoTarget echo(bench.playhead);
  bench.lines.Connect(echo);
  bench.Begin();
  ASSERT_TRUE(bench.Play());
  ASSERT_NE(bench.playhead.scan(), nullptr);
  EXPECT_EQ(bench.playhead.scan()->number, 4u);
  EXPECT_EQ(bench.playhead.scan()->played.record.index, 4u);
  EXPECT_EQ(bench.playhead.scan()->played.pass, 2u);
  EXPECT_EQ(bench.playhead.compared_scans(), 0u);
  while (bench.playhead.Next()) {
  }
  // The loop, three records and its end twice, and the one that ends the file.
  EXPECT_EQ(bench.playhead.records(), 1 + 2 * 4 + 1u);
}

TEST(PlayLength, CountsClocksAsTheyArePlayed) {
  tvb::Writer writer;
  writer.FreshFrequency(2000000);
  writer.Hir(3, tvb::Buffer{0});
  writer.Sir(8, tvb::Buffer{0x60});                     // 6 + 3 + 8
  writer.RunTest(100, std::chrono::microseconds(500));  // 1100
  writer.BeginLoop(10);
  writer.Sdr(40, tvb::Buffer(5));  // 45
  writer.RunTest(7);
  writer.EndLoop();
  writer.ClearPads();
  const tvb::Buffer image = writer.Finish();
  const tvb::PlayLength length = tvb::MeasurePlay(image, tvb::ReadHeader(image));
  EXPECT_EQ(length.clocks, 17 + 1100 + 10 * 52u);
  EXPECT_EQ(length.records, 2 + 1 + 1 + 1 + 1 + 10 * 3 + 4 + 1u);
}

}  // namespace
