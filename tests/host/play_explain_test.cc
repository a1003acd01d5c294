// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/explain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "tools/rehearse/rehearsal.h"
#include "tools/rehearse/verdict.h"
#include "tvb/play_order.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// What a download with one bit inverted has told, and the last read that a board sees of it.
struct Failed {
  std::string told;
  uint64_t clocks = 0;  // rising edges of TCK
  bool level = false;
};

Failed FailAt(const tool::PlayInput &input, const tool::FailAt &fail_at) {
  tool::RehearsalOptions options;
  options.fail_at = fail_at;
  Failed failed;
  tool::Rehearsal rehearsal(input.file->image(), input.file->header(), nullptr, options,
                            {[](uint64_t, std::string_view) {}, nullptr, nullptr});
  rehearsal.Run({[] {}});
  failed.clocks = rehearsal.counts().all_clocks();
  rehearsal.End();
  testing::internal::CaptureStderr();
  EXPECT_EQ(tool::TellVerdict(rehearsal, input), 1);
  failed.told = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(rehearsal.mismatch());
  failed.level = rehearsal.mismatch() && rehearsal.mismatch()->read[rehearsal.mismatch()->bit];
  return failed;
}

std::pair<int, std::string> Explain(const std::vector<tool::PlayInput> &files,
                                    const tool::BoardRead &read) {
  testing::internal::CaptureStderr();
  const int code = tool::ExplainRead(files, read);
  return {code, testing::internal::GetCapturedStderr()};
}

// Every bit that a file compares, in each pass of its loops.
std::vector<tool::FailAt> ComparedBits(const tool::TvbFile &file) {
  std::vector<tool::FailAt> all;
  tvb::PlayOrder order(file.image(), file.header());
  uint64_t scans = 0;
  while (const auto played = order.Next()) {
    if (!played->record.IsShift()) {
      continue;
    }
    ++scans;
    tool::FileScan scan;
    scan.mask = tvb::FieldData(file.image(), played->record, tvb::kTagMask);
    for (uint32_t bit = 0; bit < played->record.bits(); ++bit) {
      if (scan.Compares(bit)) {
        all.push_back({scans, bit});
      }
    }
  }
  return all;
}

tool::PlayInputOptions Sample(const std::string &name) {
  tool::PlayInputOptions options;
  options.paths = {std::string(SAMPLES "/") + name + ".svf"};
  options.quiet = true;
  return options;
}

std::string NoteOn(const tool::PlayInput &input) {
  return input.file->name() +
         ": note: of this scan only the level read last is known: its other bits are shown as "
         "expected\n";
}

// Under the sanitizers, not all of them.
constexpr size_t kStride = M7_SANITIZED ? 37 : 1;

// The input alone, as it would be read from the file.
std::vector<tool::PlayInput> Alone(const tool::PlayInput &input) {
  std::vector<tool::PlayInput> alone(1);
  const tvb::Bytes image = input.file->image();
  alone[0].file = std::make_unique<tool::TvbFile>(std::make_unique<tool::InputFile>(
      input.file->name(), std::vector<uint8_t>(image.begin(), image.end())));
  alone[0].source = input.source;
  alone[0].map = input.map;
  return alone;
}

class PlayExplain : public testing::TestWithParam<const char *> {};

TEST_P(PlayExplain, SaysOfEveryComparedBitWhatPlayDoes) {
  const tool::PlayInputOptions options = Sample(GetParam());
  testing::internal::CaptureStderr();
  const tool::PlayInputs inputs(options);
  testing::internal::GetCapturedStderr();
  size_t explained = 0;
  for (const tool::PlayInput &input : inputs.files()) {
    const std::vector<tool::PlayInput> alone = Alone(input);
    const std::vector<tool::FailAt> bits = ComparedBits(*input.file);
    for (size_t i = 0; i < bits.size(); i += kStride) {
      const Failed failed = FailAt(input, bits[i]);
      const auto [code, told] = Explain(alone, {failed.clocks, failed.level});
      ASSERT_EQ(code, 0) << bits[i].scan << ':' << bits[i].bit;
      ASSERT_EQ(told, failed.told + NoteOn(input)) << bits[i].scan << ':' << bits[i].bit;
      ++explained;
    }
  }
  EXPECT_GT(explained, 0u);
  std::printf("%s: %zu bits explained as play tells of them\n", GetParam(), explained);
}

INSTANTIATE_TEST_SUITE_P(Samples, PlayExplain,
                         testing::Values("blocks_by_the_line", "masks_everywhere",
                                         "pads_that_compare", "pieces_that_resume",
                                         "sections_with_resets", "target_by_pads"));

// The clocks that a board counts, the driver's own included, wherever the target is in the chain.
TEST(PlayDownload, TakesAsManyClocksAsAreForeseen) {
  for (const char *name : {"blocks_by_the_line", "pads_that_compare", "target_by_pads"}) {
    const tool::PlayInputs inputs(Sample(name));
    const tool::TvbFile &file = *inputs.files().front().file;
    tool::Rehearsal rehearsal(file.image(), file.header(), nullptr, {},
                              {[](uint64_t, std::string_view) {}, nullptr, nullptr});
    rehearsal.Run({[] {}});
    rehearsal.End();
    EXPECT_EQ(tvb::DownloadClocks(file.image(), file.header()), rehearsal.counts().all_clocks())
        << name;
  }
}

TEST(PlayExplainRefuses, AReadThatFailsNoComparison) {
  const tool::PlayInputOptions options = Sample("target_by_pads");
  const tool::PlayInputs inputs(options);
  const tool::PlayInput &input = inputs.files().front();
  const Failed failed = FailAt(input, ComparedBits(*input.file).front());
  const auto held = Explain(inputs.files(), {failed.clocks, !failed.level});
  EXPECT_EQ(held.first, 1);
  EXPECT_THAT(held.second, HasSubstr("held: the file expects"));
  // In the reset of the TAP, and in the driver's own read of the IDCODE.
  for (const uint64_t clock : {3, 40}) {
    const auto own = Explain(inputs.files(), {clock, std::nullopt});
    EXPECT_EQ(own.first, 1);
    EXPECT_THAT(own.second, EndsWith("error: the file compares nothing at clock " +
                                     std::to_string(clock) + "\n"));
  }
  const auto beyond = Explain(inputs.files(), {1000000, std::nullopt});
  EXPECT_EQ(beyond.first, 1);
  EXPECT_THAT(beyond.second, HasSubstr("error: the file has no clock 1,000,000: its download"));
}

}  // namespace
