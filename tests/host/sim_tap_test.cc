// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The simulated chain's TAP controller, state by state, against the standard's table.
#include <gtest/gtest.h>

#include <cctype>
#include <map>

#include "sim_probe.h"

namespace {

using sim_test::Probe;

struct Transition {
  const char *from;
  const char *tms0;
  const char *tms1;
  const char *path;  // levels of TMS that lead there from Test-Logic-Reset
};

constexpr Transition kTransitions[] = {
    {"Test-Logic-Reset", "Run-Test/Idle", "Test-Logic-Reset", ""},
    {"Run-Test/Idle", "Run-Test/Idle", "Select-DR-Scan", "0"},
    {"Select-DR-Scan", "Capture-DR", "Select-IR-Scan", "01"},
    {"Capture-DR", "Shift-DR", "Exit1-DR", "010"},
    {"Shift-DR", "Shift-DR", "Exit1-DR", "0100"},
    {"Exit1-DR", "Pause-DR", "Update-DR", "0101"},
    {"Pause-DR", "Pause-DR", "Exit2-DR", "01010"},
    {"Exit2-DR", "Shift-DR", "Update-DR", "010101"},
    {"Update-DR", "Run-Test/Idle", "Select-DR-Scan", "01011"},
    {"Select-IR-Scan", "Capture-IR", "Test-Logic-Reset", "011"},
    {"Capture-IR", "Shift-IR", "Exit1-IR", "0110"},
    {"Shift-IR", "Shift-IR", "Exit1-IR", "01100"},
    {"Exit1-IR", "Pause-IR", "Update-IR", "01101"},
    {"Pause-IR", "Pause-IR", "Exit2-IR", "011010"},
    {"Exit2-IR", "Shift-IR", "Update-IR", "0110101"},
    {"Update-IR", "Run-Test/Idle", "Select-DR-Scan", "011011"},
};

std::string StateName(const sim::Chain &chain) {
  return sim_state_name(chain.state());
}

class SimTap : public ::testing::TestWithParam<Transition> {
 protected:
  void SetUp() override {
    probe_.Walk(GetParam().path);
    ASSERT_EQ(StateName(chain_), GetParam().from);
  }

  sim::Chain chain_{"idcode=0x12345679"};
  Probe probe_{chain_};
};

TEST_P(SimTap, TmsLowLeadsOn) {
  probe_.Clock(false);
  EXPECT_EQ(StateName(chain_), GetParam().tms0);
}

TEST_P(SimTap, TmsHighLeadsOn) {
  probe_.Clock(true);
  EXPECT_EQ(StateName(chain_), GetParam().tms1);
}

TEST_P(SimTap, FiveClocksWithTmsHighReset) {
  probe_.Walk("11111");
  EXPECT_EQ(StateName(chain_), "Test-Logic-Reset");
  EXPECT_EQ(chain_.instruction(1), 6u);
}

TEST_P(SimTap, OnlyARisingEdgeMoves) {
  chain_.Write(SIM_TCK, false);
  chain_.Write(SIM_TMS, false);
  chain_.Write(SIM_TMS, true);
  chain_.Write(SIM_TDI, true);
  chain_.Write(SIM_TDO, true);
  EXPECT_EQ(StateName(chain_), GetParam().from);
  chain_.Write(SIM_TCK, true);
  EXPECT_EQ(StateName(chain_), GetParam().tms1);
  chain_.Write(SIM_TCK, true);
  chain_.Write(SIM_TCK, false);
  chain_.Write(SIM_TCK, false);
  EXPECT_EQ(StateName(chain_), GetParam().tms1);
}

TEST_P(SimTap, ClockIsCountedInTheStateThatItFound) {
  const sim_state found = chain_.state();
  sim_chain_clear_counters(chain_.get());
  probe_.Clock(true);
  for (int state = 0; state < SIM_STATE_COUNT; ++state) {
    EXPECT_EQ(chain_.counters().clocks[state], state == found ? 1u : 0u) << state;
  }
}

std::string ParameterName(const ::testing::TestParamInfo<Transition> &info) {
  std::string name;
  for (const char c : std::string(info.param.from)) {
    if (isalnum(static_cast<unsigned char>(c))) {
      name.push_back(c);
    }
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(EveryState, SimTap, ::testing::ValuesIn(kTransitions), ParameterName);

TEST(SimTapTable, HasSixteenDifferentStates) {
  std::map<std::string, int> seen;
  for (const Transition &transition : kTransitions) {
    ++seen[transition.from];
  }
  EXPECT_EQ(seen.size(), 16u);
  EXPECT_STREQ(sim_state_name(SIM_STATE_COUNT), "?");
}

TEST(SimPins, StartPulledUpWithTckLow) {
  sim::Chain chain("idcode=1");
  EXPECT_EQ(sim_chain_read(chain.get(), SIM_TCK), 0);
  EXPECT_EQ(sim_chain_read(chain.get(), SIM_TMS), 1);
  EXPECT_EQ(sim_chain_read(chain.get(), SIM_TDI), 1);
  EXPECT_EQ(sim_chain_read(chain.get(), SIM_TDO), 1);
  EXPECT_EQ(chain.state(), SIM_TEST_LOGIC_RESET);
  EXPECT_EQ(chain.instruction(1), 6u);
}

TEST(SimPins, ReadBackWhatIsDriven) {
  sim::Chain chain("idcode=1");
  for (const sim_line line : {SIM_TCK, SIM_TMS, SIM_TDI}) {
    sim_chain_write(chain.get(), line, 0);
    EXPECT_EQ(sim_chain_read(chain.get(), line), 0);
    sim_chain_write(chain.get(), line, 0x80);
    EXPECT_EQ(sim_chain_read(chain.get(), line), 1);
  }
}

TEST(SimPins, TdoChangesOnTheFallingEdgeOnly) {
  sim::Chain chain("idcode=0xFFFFFFFE");
  Probe probe(chain);
  probe.Walk("01");
  chain.Write(SIM_TMS, false);
  chain.Write(SIM_TCK, true);
  EXPECT_EQ(chain.state(), SIM_CAPTURE_DR);
  chain.Write(SIM_TCK, false);
  EXPECT_TRUE(chain.Tdo());
  chain.Write(SIM_TCK, true);
  EXPECT_EQ(chain.state(), SIM_SHIFT_DR);
  EXPECT_TRUE(chain.Tdo());
  chain.Write(SIM_TCK, false);
  EXPECT_FALSE(chain.Tdo());
  chain.Write(SIM_TCK, true);
  EXPECT_FALSE(chain.Tdo());
  chain.Write(SIM_TCK, false);
  EXPECT_TRUE(chain.Tdo());
}

TEST(SimPins, TdoIsReleasedOnTheFallAfterShift) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Walk("0100");
  EXPECT_FALSE(chain.Tdo());
  chain.Write(SIM_TMS, true);
  chain.Write(SIM_TCK, true);
  EXPECT_EQ(chain.state(), SIM_EXIT1_DR);
  EXPECT_FALSE(chain.Tdo());
  chain.Write(SIM_TCK, false);
  EXPECT_TRUE(chain.Tdo());
}

TEST(SimPins, EqualWritesCountNoChange) {
  sim::Chain chain("bypass");
  for (const bool level : {true, true, false, false, true}) {
    chain.Write(SIM_TMS, level);
    chain.Write(SIM_TDI, level);
    chain.Write(SIM_TDI, !level);
  }
  EXPECT_EQ(chain.counters().tms_changes, 2u);
  EXPECT_EQ(chain.counters().tdi_changes, 7u);
}

// An instruction comes into force on the falling edge in Update-IR, the reset one on the falling
// edge in Test-Logic-Reset.
TEST(SimPins, InstructionsChangeOnTheFallingEdge) {
  sim::Chain chain("idcode=1");
  Probe probe(chain);
  probe.Walk("01100");
  for (int bit = 0; bit < 8; ++bit) {
    probe.Clock(bit == 7, bit != 0);
  }
  chain.Write(SIM_TCK, true);
  EXPECT_EQ(chain.state(), SIM_UPDATE_IR);
  EXPECT_EQ(chain.instruction(1), 6u);
  chain.Write(SIM_TCK, false);
  EXPECT_EQ(chain.instruction(1), 0xFEu);
  probe.Walk("11");
  chain.Write(SIM_TCK, true);
  EXPECT_EQ(chain.state(), SIM_TEST_LOGIC_RESET);
  EXPECT_EQ(chain.instruction(1), 0xFEu);
  chain.Write(SIM_TCK, false);
  EXPECT_EQ(chain.instruction(1), 6u);
}

}  // namespace
