// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/rehearsal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "play_bench.h"
#include "tools/rehearse/target_chain.h"
#include "tools/rehearse/verdict.h"
#include "tvb/play_order.h"

namespace {

using test::FileBytes;
using testing::ElementsAre;
using testing::HasSubstr;
using tool::DriverStop;

tool::ChainDescription OnePart() {
  tool::ChainDescription description;
  description.devices = {{0x0A014C35, 6, 2, 16, 30, 10, 0, 8, 0}};
  return description;
}

// A download with the driver itself.
struct Played {
  explicit Played(const tvb::Buffer &bytes, tool::ChainTarget *chain = nullptr,
                  std::optional<tool::FailAt> fail_at = std::nullopt, uint64_t pin_ns = 100,
                  uint32_t calls_per_tick = 1 << 18)
      : image(bytes),
        header(tvb::ReadHeader(image)),
        rehearsal(image, header, chain, Options(fail_at, pin_ns),
                  {[this](uint64_t, std::string_view line) { log.emplace_back(line); },
                   [this](std::string_view text) { vcd += text; },
                   [this](std::string_view text) { scans += text; }}) {
    rehearsal.Run({[this] { Look(); }, calls_per_tick});
    rehearsal.End();
  }

  // Takes in what can be seen, as a progress line does.
  void Look() {
    ++ticks;
    const tool::Rehearsal &seen = rehearsal;
    seen_records = seen.playhead().records();
    seen_clocks = seen.counts().all_clocks();
  }

  // What a user is told.
  std::string Told(bool with_clocks = true) {
    const auto &mismatch = rehearsal.mismatch();
    std::string told =
        mismatch ? tool::MismatchSentence(*mismatch) + tool::MismatchDetail(*mismatch) : "";
    if (with_clocks) {
      told += tool::Summary(rehearsal, mismatch ? 1 : 0);
    }
    return told + scans;
  }

  static tool::RehearsalOptions Options(std::optional<tool::FailAt> fail_at, uint64_t pin_ns) {
    tool::RehearsalOptions options;
    options.fail_at = fail_at;
    options.pin_ns = pin_ns;
    return options;
  }

  tvb::Buffer image;
  tvb::HeaderView header;
  std::vector<std::string> log;
  std::string vcd;
  std::string scans;
  int ticks = 0;
  uint64_t seen_records = 0;
  uint64_t seen_clocks = 0;
  tool::Rehearsal rehearsal;
};

tvb::Buffer ProgramFile() {
  tvb::Writer writer;
  writer.Frequency(0);
  writer.Sir(8, FileBytes(0x10, 8));
  writer.Sdr(1, tvb::Buffer{0});
  writer.Sir(8, FileBytes(0x20, 8));
  writer.RunTest(40);
  writer.Sir(8, FileBytes(0x31, 8));
  writer.Sdr(16, FileBytes(0x1234, 16));
  writer.RunTest(20);
  writer.Sdr(16, FileBytes(0xABCD, 16));
  writer.RunTest(20);
  writer.Sir(8, FileBytes(0x40, 8));
  writer.Sdr(8, tvb::Buffer{0}, FileBytes(0x05, 8), tvb::Buffer{0xFF});
  return writer.Finish();
}

TEST(PlayRehearsal, ProgramsASimulatedPart) {
  tool::ChainTarget chain(OnePart(), "chain");
  Played played(ProgramFile(), &chain);
  EXPECT_TRUE(played.rehearsal.result().done);
  EXPECT_EQ(played.rehearsal.result().stop, DriverStop::kNothing);
  EXPECT_EQ(chain.Memory(), "1 0 1234\n1 1 ABCD\n");
  EXPECT_THAT(played.log,
              ElementsAre(HasSubstr("INIT BEGIN"), HasSubstr("init success"), HasSubstr("INIT END"),
                          "m7 cplddownload start file len " + std::to_string(played.image.size()),
                          "DECODE CHIP : 0a014c35", HasSubstr("m7 process done"),
                          "m7 cplddownload end rtn_code 0", HasSubstr("exit success")));
  EXPECT_THAT(played.scans, testing::StartsWith("- IR 8 TDI 06 TDO 01\n"
                                                "- DR 32 TDI FFFFFFFF TDO 0A014C35\n"
                                                "1 IR 8 TDI 10 TDO 01\n"
                                                "2 DR 1 TDI 0 TDO 0\n"));
  EXPECT_THAT(played.scans, testing::EndsWith("8 DR 8 TDI 00 TDO 05\n"));
  EXPECT_THAT(played.vcd, HasSubstr("\n1(\n0'\n0%\n"));
}

// The driver's reset and its IDCODE scans are not the file's.
constexpr uint64_t kOwnClocks = 11 + 14 + 37;

TEST(PlayRehearsal, TakesTheClocksAndTheTimeThatTheFileAsksFor) {
  Played played(ProgramFile(), nullptr, std::nullopt, 1000);
  uint64_t clocks = 0;
  for (const uint64_t of_state : played.rehearsal.counts().clocks) {
    clocks += of_state;
  }
  EXPECT_EQ(clocks, kOwnClocks + tvb::MeasurePlay(played.image, played.header).clocks);
  // At 1 MHz and 2 us a clock nothing is left to wait for but what is always added.
  EXPECT_EQ(played.rehearsal.clock().waited(), 0u);
  Played fast(ProgramFile(), nullptr, std::nullopt, 1);
  EXPECT_EQ(fast.rehearsal.clock().waited(), 3 * 100000u);
}

TEST(PlayRehearsal, SeesAFailureThatTheDriverDoesNot) {
  tvb::Writer writer;
  writer.Sdr(32, FileBytes(0, 32), FileBytes(5, 32), FileBytes(0xFFFFFFFF, 32));
  Played played(writer.FinishUnguarded(), nullptr, tool::FailAt{1, 31});
  EXPECT_TRUE(played.rehearsal.result().done);
  EXPECT_EQ(played.rehearsal.result().stop, DriverStop::kMismatch);
  EXPECT_TRUE(played.rehearsal.failed_as_asked());
  ASSERT_TRUE(played.rehearsal.mismatch());
  EXPECT_EQ(played.rehearsal.mismatch()->bit, 31u);
  EXPECT_THAT(played.scans, testing::EndsWith("1 DR 31 TDI 00000000 TDO 00000005 stopped\n"));
}

TEST(PlayRehearsal, StopsWhereTheDriverStops) {
  tvb::Writer writer;
  writer.Sdr(32, FileBytes(0, 32), FileBytes(5, 32), FileBytes(0xFFFFFFFF, 32));
  writer.Sdr(8, tvb::Buffer{0xFF});
  Played played(writer.Finish(), nullptr, tool::FailAt{1, 3});
  EXPECT_FALSE(played.rehearsal.result().done);
  EXPECT_EQ(played.rehearsal.result().stop, DriverStop::kMismatch);
  EXPECT_EQ(played.rehearsal.playhead().scans(), 1u);
  ASSERT_TRUE(played.rehearsal.mismatch());
  EXPECT_EQ(played.rehearsal.mismatch()->read.Hex(), "0000000D");
  // Three clocks into Shift-DR and three bits: that the rest of the scan is read counts nowhere.
  EXPECT_EQ(played.rehearsal.counts().all_clocks(), kOwnClocks + 6);
  EXPECT_EQ(played.rehearsal.counts().all_reads(), 32 + 4u);
  EXPECT_THAT(played.scans, testing::EndsWith("1 DR 3 TDI 0 TDO 5 stopped\n"));
  EXPECT_THAT(played.log, testing::Contains("Verify Failed"));
}

TEST(PlayRehearsal, TellsTheOtherEndsApart) {
  tvb::Writer too_long;
  too_long.Sdr(4194300, tvb::Buffer(524288));
  const tool::DriverResult held = Played(too_long.Finish()).rehearsal.result();
  EXPECT_FALSE(held.done);
  EXPECT_EQ(held.stop, DriverStop::kNoMemory);
  tvb::Writer unknown;
  unknown.Record(3, {});
  const tool::DriverResult read = Played(unknown.Finish()).rehearsal.result();
  EXPECT_FALSE(read.done);
  EXPECT_EQ(read.stop, DriverStop::kNothing);
}

// So many idle clocks, and five pairs of scans that are alike but for their data.
tvb::Buffer ScansAfterIdle(uint64_t clocks) {
  tvb::Writer writer;
  writer.Frequency(0);
  writer.RunTest(clocks);
  for (int i = 0; i < 5; ++i) {
    writer.Sdr(8, FileBytes(0x5A, 8), FileBytes(0x00, 8), tvb::Buffer{0xFF});
    writer.Sdr(8, FileBytes(0xA5, 8), FileBytes(0x00, 8), tvb::Buffer{0xFF});
  }
  return writer.Finish();
}

TEST(PlayRehearsal, IsTheSameWhereverItIsLookedAt) {
  const tvb::Buffer file = ScansAfterIdle(40);
  for (const auto &fail_at : {std::optional<tool::FailAt>(), std::optional(tool::FailAt{7, 3})}) {
    Played never(file, nullptr, fail_at, 100, UINT32_MAX);
    EXPECT_EQ(never.ticks, 0);
    EXPECT_EQ(never.rehearsal.playhead().scans(), fail_at ? 7u : 10u);
    EXPECT_EQ(never.rehearsal.mismatch().has_value(), fail_at.has_value());
    for (uint32_t calls = 1; calls <= 2000; calls += calls < 50 ? 1 : 37) {
      Played looked(file, nullptr, fail_at, 100, calls);
      EXPECT_EQ(looked.Told(), never.Told()) << calls;
      EXPECT_EQ(looked.vcd, never.vcd) << calls;
    }
  }
}

TEST(PlayRehearsal, IsTheSameAfterAnyNumberOfIdleClocks) {
  Played one(ScansAfterIdle(1), nullptr, tool::FailAt{9, 3});
  for (uint64_t clocks = 300; clocks <= 700; ++clocks) {
    Played played(ScansAfterIdle(clocks), nullptr, tool::FailAt{9, 3}, 100, 600);
    EXPECT_GE(played.ticks, 2);
    EXPECT_EQ(played.Told(false), one.Told(false)) << clocks;
  }
}

TEST(PlayRehearsal, TicksInALongRunTest) {
  tvb::Writer writer;
  writer.RunTest(1000000);
  EXPECT_GE(Played(writer.Finish()).ticks, 7);
}

}  // namespace
