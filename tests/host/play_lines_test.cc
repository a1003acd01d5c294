// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/lines.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "sim/host.h"
#include "tools/rehearse/target_chain.h"

namespace {

using svf::TapState;
using tool::BoardClock;
using tool::Line;
using tool::Lines;

tool::ChainDescription TwoDevices() {
  tool::ChainDescription description;
  description.devices = {{0x0A014C35, 6, 0, 0, 0, 0, 0, 8, 0}, {}};
  return description;
}

// Notes the changes that it is told, in their order.
class Notes {
 public:
  void WatchOn(Lines &lines) {
    lines.WatchChanges([this](const tool::LineChange &change) { Add(change); });
  }

  std::vector<std::string> Take() {
    return std::exchange(notes_, {});
  }

 private:
  void Add(const tool::LineChange &change) {
    constexpr const char *kNames[] = {"TCK", "TMS", "TDI", "TDO"};
    notes_.push_back(fmt::format("{} {} {:d}", change.time, kNames[static_cast<int>(change.line)],
                                 change.level));
    if (change.entered) {
      notes_.back() += fmt::format(" {}", StandardName(change.state));
    }
  }

  std::vector<std::string> notes_;
};

class PlayLines : public ::testing::Test {
 protected:
  PlayLines() : chain_(TwoDevices(), "chain"), lines_(clock_, 100) {
    lines_.Connect(chain_);
  }

  void Clock(bool tms, bool tdi = true) {
    lines_.Write(Line::kTck, false);
    lines_.Write(Line::kTms, tms);
    lines_.Write(Line::kTdi, tdi);
    lines_.Write(Line::kTck, true);
  }

  BoardClock clock_;
  tool::ChainTarget chain_;
  Lines lines_;
};

TEST(PlayTap, FollowsTheStatesThatTheChainGoesThrough) {
  sim::Chain chain(std::string("bypass"));
  tool::Tap tap;
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const bool tms = random() % 2 != 0;
    chain.Write(SIM_TCK, false);
    chain.Write(SIM_TMS, tms);
    chain.Write(SIM_TCK, true);
    ASSERT_EQ(StandardName(tap.Rise(tms)), sim_state_name(chain.state())) << "at clock " << i;
  }
}

TEST(PlayTap, CountsTheBitsOfAScan) {
  tool::Tap tap;
  for (const bool tms : {false, true, true, false, false}) {
    tap.Rise(tms);
  }
  EXPECT_TRUE(tap.shifting());
  EXPECT_EQ(tap.bits(), 0u);
  tap.Rise(false);
  tap.Rise(true);
  EXPECT_FALSE(tap.shifting());
  EXPECT_EQ(tap.bits(), 2u);
  // Through a pause and back: the same scan goes on.
  for (const bool tms : {false, true, false, true, true, false}) {
    tap.Rise(tms);
  }
  EXPECT_EQ(tap.bits(), 3u);
  for (const bool tms : {true, false, false}) {
    tap.Rise(tms);
  }
  EXPECT_EQ(tap.bits(), 0u);
}

TEST_F(PlayLines, CountsCallsAndClocksAndTakesTimeForEachCall) {
  Clock(false);
  Clock(false);
  Clock(true);
  lines_.Read();
  EXPECT_THAT(lines_.counts().writes, testing::ElementsAre(6, 3, 3));
  EXPECT_THAT(lines_.counts().reads, testing::ElementsAre(0, 1));
  EXPECT_EQ(lines_.counts().all_reads(), 1u);
  EXPECT_EQ(lines_.counts().calls(), 13u);
  EXPECT_EQ(lines_.counts().clocks_in(TapState::kReset), 1u);
  EXPECT_EQ(lines_.counts().clocks_in(TapState::kIdle), 2u);
  EXPECT_EQ(lines_.counts().all_clocks(), 3u);
  EXPECT_EQ(clock_.now(), 13 * 100u);
  EXPECT_EQ(clock_.waited(), 0u);
}

TEST_F(PlayLines, TellsEveryChangeAndNothingElse) {
  Notes notes;
  notes.WatchOn(lines_);
  Clock(false);
  EXPECT_THAT(notes.Take(), testing::ElementsAre("100 TMS 0", "300 TCK 1 Run-Test/Idle"));
  Clock(false, false);
  EXPECT_THAT(notes.Take(), testing::ElementsAre("400 TCK 0", "600 TDI 0", "700 TCK 1"));
}

TEST_F(PlayLines, TellsTdoAsItFalls) {
  Notes notes;
  for (const bool tms : {false, true, false, false}) {
    Clock(tms);
  }
  notes.WatchOn(lines_);
  // The device nearest TDO is in BYPASS and gives a 0, the one behind it the 1 of its IDCODE.
  Clock(false, false);
  EXPECT_THAT(notes.Take(),
              testing::ElementsAre("1600 TCK 0", "1600 TDO 0", "1800 TDI 0", "1900 TCK 1"));
  EXPECT_FALSE(lines_.Read());
  lines_.Write(Line::kTck, false);
  EXPECT_TRUE(lines_.Read());
  lines_.Write(Line::kTck, true);
  EXPECT_THAT(notes.Take(), testing::ElementsAre("2100 TCK 0", "2100 TDO 1", "2300 TCK 1"));
}

std::string Describe(const tool::LineScan &scan) {
  return fmt::format("{}, {}", tool::ScanText(0, scan), scan.open ? "open" : "closed");
}

TEST_F(PlayLines, FollowsTheScanAndTellsItWhenItIsUpdated) {
  std::vector<std::string> told;
  lines_.WatchScans([&told](const tool::LineScan &scan) { told.push_back(Describe(scan)); });
  for (const bool tms : {false, true, false, false}) {
    Clock(tms);
  }
  EXPECT_EQ(Describe(lines_.scan()), "- DR 0 TDI - TDO -, open");
  Clock(false, false);
  Clock(true, true);
  EXPECT_EQ(Describe(lines_.scan()), "- DR 2 TDI 2 TDO 2, open");
  EXPECT_TRUE(told.empty());
  Clock(true);
  Clock(false);
  ASSERT_THAT(told, testing::ElementsAre("- DR 2 TDI 2 TDO 2, closed"));
  EXPECT_EQ(Describe(lines_.scan()), told[0]) << "it stays until the next begins";
  Clock(true);
  EXPECT_EQ(Describe(lines_.scan()), "- DR 0 TDI - TDO -, closed");
  for (const bool tms : {true, false, false, true}) {
    Clock(tms);
  }
  EXPECT_EQ(Describe(lines_.scan()), "- IR 1 TDI 1 TDO 1, open");
  EXPECT_EQ(told.size(), 1u);
}

// What a watcher is told does not depend on who else watches, or came before.
TEST_F(PlayLines, TellsEveryWatcherTheSame) {
  Notes first;
  Notes last;
  first.WatchOn(lines_);
  lines_.WatchScans([](const tool::LineScan &) {});
  last.WatchOn(lines_);
  for (const bool tms : {false, true, false, false, false, false, true, true, false}) {
    Clock(tms);
  }
  const std::vector<std::string> notes = first.Take();
  EXPECT_EQ(notes, last.Take());
  EXPECT_THAT(notes, testing::Contains("3500 TCK 1 Run-Test/Idle"));
}

}  // namespace
