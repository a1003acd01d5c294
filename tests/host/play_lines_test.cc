// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "sim/host.h"
#include "tools/rehearse/target_chain.h"

namespace {

using tool::BoardClock;
using tool::Line;
using tool::Lines;
using tool::TapObserver;
using tool::TapState;

tool::ChainDescription TwoDevices() {
  tool::ChainDescription description;
  description.devices = {{0x0A014C35, 6, 0, 0, 0, 0, 0}, {}};
  return description;
}

// Notes what an EdgeWatcher and a ScanWatcher are told, in its order.
class Notes : public tool::EdgeWatcher, public tool::ScanWatcher {
 public:
  void Changed(Line line, bool level, uint64_t time) override {
    constexpr const char *kNames[] = {"TCK", "TMS", "TDI", "TDO"};
    Note(std::to_string(time) + ' ' + kNames[static_cast<int>(line)] + (level ? " 1" : " 0"));
  }
  void Entered(TapState state, uint64_t time) override {
    Note(std::to_string(time) + ' ' + std::string(NameOf(state)));
  }
  void Entered(TapState state) override {
    Note("scan: " + std::string(NameOf(state)));
  }
  void Shifted(bool tdi, bool tdo) override {
    Note(std::string("bit ") + (tdi ? '1' : '0') + (tdo ? '1' : '0'));
  }
  void Read(bool tdo) override {
    Note(tdo ? "read 1" : "read 0");
  }

  std::vector<std::string> Take() {
    return std::move(notes_);
  }

 private:
  void Note(const std::string &text) {
    notes_.push_back(text);
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
  TapObserver tap;
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const bool tms = random() % 2 != 0;
    chain.Write(SIM_TCK, false);
    chain.Write(SIM_TMS, tms);
    chain.Write(SIM_TCK, true);
    ASSERT_EQ(NameOf(tap.Rise(tms)), sim_state_name(chain.state())) << "at clock " << i;
  }
  EXPECT_EQ(tap.scan(), chain.counters().ir_scans + chain.counters().dr_scans);
}

TEST(PlayTap, CountsTheBitsOfAScan) {
  TapObserver tap;
  for (const bool tms : {false, true, true, false, false}) {
    tap.Rise(tms);
  }
  EXPECT_TRUE(tap.shifting());
  EXPECT_EQ(tap.scan_register(), tool::Register::kIr);
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
  EXPECT_EQ(tap.scan(), 1u);
  for (const bool tms : {true, false, false}) {
    tap.Rise(tms);
  }
  EXPECT_EQ(tap.scan(), 2u);
  EXPECT_EQ(tap.scan_register(), tool::Register::kDr);
  EXPECT_EQ(tap.bits(), 0u);
}

TEST_F(PlayLines, CountsCallsAndClocksAndTakesTimeForEachCall) {
  Clock(false);
  Clock(false);
  Clock(true);
  lines_.Read();
  EXPECT_THAT(lines_.counts().writes, testing::ElementsAre(6, 3, 3));
  EXPECT_EQ(lines_.counts().reads, 1u);
  EXPECT_EQ(lines_.counts().clocks[static_cast<int>(TapState::kTestLogicReset)], 1u);
  EXPECT_EQ(lines_.counts().clocks[static_cast<int>(TapState::kRunTestIdle)], 2u);
  EXPECT_EQ(clock_.now(), 13 * 100u);
  EXPECT_EQ(clock_.waited(), 0u);
}

TEST_F(PlayLines, TellsEveryChangeAndNothingElse) {
  Notes notes;
  lines_.Watch(static_cast<tool::EdgeWatcher &>(notes));
  Clock(false);
  EXPECT_THAT(notes.Take(), testing::ElementsAre("100 TMS 0", "300 TCK 1", "300 Run-Test/Idle"));
  Clock(false, false);
  EXPECT_THAT(notes.Take(), testing::ElementsAre("400 TCK 0", "600 TDI 0", "700 TCK 1"));
}

TEST_F(PlayLines, TellsBitsAsTheyStandAtTheEdgeAndTdoAsItFalls) {
  Notes scans;
  Notes edges;
  for (const bool tms : {false, true, false}) {
    Clock(tms);
  }
  lines_.Watch(static_cast<tool::ScanWatcher &>(scans));
  Clock(false);
  EXPECT_THAT(scans.Take(), testing::ElementsAre("scan: Shift-DR"));
  lines_.Watch(static_cast<tool::EdgeWatcher &>(edges));
  // The device nearest TDO is in BYPASS and gives a 0, the one behind it the 1 of its IDCODE.
  Clock(false, false);
  EXPECT_THAT(edges.Take(),
              testing::ElementsAre("1600 TCK 0", "1600 TDO 0", "1800 TDI 0", "1900 TCK 1"));
  EXPECT_FALSE(lines_.Read());
  lines_.Write(Line::kTck, false);
  EXPECT_TRUE(lines_.Read());
  lines_.Write(Line::kTck, true);
  EXPECT_THAT(scans.Take(), testing::ElementsAre("bit 00", "read 0", "read 1", "bit 01"));
}

}  // namespace
