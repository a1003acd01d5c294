// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/tap.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "sim/host.h"

namespace {

using svf::TapState;

// SVF's states in the order of the simulated chain's.
constexpr TapState kOfSim[SIM_STATE_COUNT] = {
    TapState::kReset,    TapState::kIdle,     TapState::kDrSelect,  TapState::kDrCapture,
    TapState::kDrShift,  TapState::kDrExit1,  TapState::kDrPause,   TapState::kDrExit2,
    TapState::kDrUpdate, TapState::kIrSelect, TapState::kIrCapture, TapState::kIrShift,
    TapState::kIrExit1,  TapState::kIrPause,  TapState::kIrExit2,   TapState::kIrUpdate,
};

TEST(SvfTap, WalksAsADeviceDoes) {
  sim::Chain chain("bypass");
  std::mt19937 random(1);
  unsigned seen = 0;
  for (int clock = 0; clock < 2000; ++clock) {
    const TapState before = kOfSim[chain.state()];
    const bool tms = random() % 2 == 0;
    chain.Write(SIM_TMS, tms);
    chain.Write(SIM_TCK, false);
    chain.Write(SIM_TCK, true);
    const TapState after = kOfSim[chain.state()];
    ASSERT_EQ(svf::After(before, tms), after) << svf::Name(before) << " " << tms;
    EXPECT_TRUE(svf::Leads(before, after));
    seen |= 1u << static_cast<int>(after);
  }
  EXPECT_EQ(seen, 0xFFFFu);
}

TEST(SvfTap, NamesTheStatesAsTheStandardDoes) {
  for (int state = 0; state < SIM_STATE_COUNT; ++state) {
    EXPECT_EQ(svf::StandardName(kOfSim[state]), sim_state_name(static_cast<sim_state>(state)));
  }
  EXPECT_EQ(svf::StandardName(TapState::kIrPause), "Pause-IR");
}

TEST(SvfTap, FindsEveryStateByName) {
  for (int state = 0; state < 16; ++state) {
    EXPECT_EQ(svf::FindTapState(svf::Name(static_cast<TapState>(state))),
              static_cast<TapState>(state));
  }
  EXPECT_EQ(svf::FindTapState("irPause"), TapState::kIrPause);
  EXPECT_FALSE(svf::FindTapState("PAUSE"));
  EXPECT_FALSE(svf::FindTapState(""));
}

TEST(SvfTap, HasFourStableStates) {
  int stable = 0;
  for (int state = 0; state < 16; ++state) {
    stable += svf::IsStable(static_cast<TapState>(state));
  }
  EXPECT_EQ(stable, 4);
  EXPECT_TRUE(svf::IsPause(TapState::kIrPause) && svf::IsPause(TapState::kDrPause));
  EXPECT_FALSE(svf::IsPause(TapState::kIdle));
}

TEST(SvfTap, LeadsOnlyByOneClock) {
  EXPECT_TRUE(svf::Leads(TapState::kIdle, TapState::kIdle));
  EXPECT_TRUE(svf::Leads(TapState::kDrExit2, TapState::kDrShift));
  EXPECT_FALSE(svf::Leads(TapState::kDrPause, TapState::kDrShift));
  EXPECT_FALSE(svf::Leads(TapState::kIdle, TapState::kReset));
}

}  // namespace
