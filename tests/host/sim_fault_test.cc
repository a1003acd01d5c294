// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The faults of the simulated chain, each by its name.
#include <gtest/gtest.h>

#include "sim_probe.h"

namespace {

using sim_test::Bits;
using sim_test::Probe;

const std::string kIdcode = Bits(0x0A014C35, 32);

std::string Flipped(std::string bits, size_t bit) {
  bits[bit] = bits[bit] == '0' ? '1' : '0';
  return bits;
}

class SimFault : public ::testing::Test {
 protected:
  SimFault() {
    probe_.Reset();
  }

  // The names of the faults that are set.
  std::string Set() const {
    std::string names;
    for (int kind = 0; kind < SIM_FAULT_KIND_COUNT; ++kind) {
      sim_fault fault;
      if (sim_chain_fault(chain_.get(), static_cast<sim_fault_kind>(kind), &fault) != 0) {
        char text[40];
        sim_fault_format(&fault, text, sizeof(text));
        names += std::string(text) + ";";
      }
    }
    return names;
  }

  void ProgramRows() {
    probe_.Instruct(SIM_ENABLE);
    probe_.Instruct(SIM_ERASE);
    probe_.Idle(1);
    probe_.Instruct(SIM_PROGRAM);
    for (int row = 0; row < 3; ++row) {
      probe_.ScanDr("01010101");
      probe_.Idle(1);
    }
  }

  std::string ReadIdcode() {
    return probe_.ScanDr(std::string(32, '0'));
  }

  sim::Chain chain_{"idcode=0x0A014C35,part=3x8,erase=1,program=1"};
  Probe probe_{chain_};
};

TEST_F(SimFault, NoneAtFirst) {
  EXPECT_EQ(Set(), "");
  EXPECT_EQ(ReadIdcode(), kIdcode);
}

TEST_F(SimFault, TdoStuckAt0) {
  chain_.SetFaults("tdo-stuck-0");
  EXPECT_FALSE(chain_.Tdo());
  EXPECT_EQ(ReadIdcode(), std::string(32, '0'));
  EXPECT_EQ(probe_.Instruct(SIM_BYPASS), "00000000");
  EXPECT_EQ(chain_.instruction(1), 0xFFu);
  EXPECT_EQ(Set(), "tdo-stuck-0;");
}

TEST_F(SimFault, TdoStuckAt1ReplacesStuckAt0) {
  chain_.SetFaults("tdo-stuck-0;tdo-stuck-1");
  EXPECT_TRUE(chain_.Tdo());
  EXPECT_EQ(ReadIdcode(), std::string(32, '1'));
  EXPECT_EQ(Set(), "tdo-stuck-1;");
}

TEST_F(SimFault, EveryBitOfAScanFlips) {
  for (unsigned bit = 0; bit < 32; ++bit) {
    chain_.SetFaults("flip=2:" + std::to_string(bit));
    EXPECT_EQ(ReadIdcode(), kIdcode);
    EXPECT_EQ(ReadIdcode(), Flipped(kIdcode, bit)) << bit;
    EXPECT_EQ(ReadIdcode(), kIdcode);
  }
}

TEST_F(SimFault, InstructionScansAreNotCountedAndNotFlipped) {
  chain_.SetFaults("flip=1:0");
  EXPECT_EQ(probe_.Instruct(6), "10000000");
  EXPECT_EQ(probe_.Instruct(6), "10000000");
  EXPECT_EQ(ReadIdcode(), Flipped(kIdcode, 0));
  EXPECT_EQ(probe_.Instruct(6), "10000000");
}

// The flip is on the line: the register itself keeps its bits.
TEST_F(SimFault, FlipLeavesTheDeviceAlone) {
  ProgramRows();
  probe_.Instruct(SIM_ADDRESS);
  probe_.ScanDr(Bits(1, 32));
  probe_.Instruct(SIM_READ);
  chain_.SetFaults("flip=1:3");
  EXPECT_EQ(probe_.ScanDr("00000000"), "01000101");
  EXPECT_EQ(chain_.Row(1, 1), "01010101");
}

TEST_F(SimFault, BitsAfterAPauseAreCountedOn) {
  chain_.SetFaults("flip=1:20");
  probe_.Walk("100");
  std::string tdo;
  for (int bit = 0; bit < 32; ++bit) {
    tdo.push_back(probe_.Clock(bit == 9 || bit == 31));
    if (bit == 9) {
      probe_.Walk("010");
    }
  }
  EXPECT_EQ(tdo, Flipped(kIdcode, 20));
}

TEST_F(SimFault, DeadRowIsNotProgrammedAndSaysNothing) {
  chain_.SetRow(1, 1, "00000000");
  chain_.SetFaults("dead-row=1:1");
  ProgramRows();
  EXPECT_EQ(chain_.Row(1, 0), "01010101");
  EXPECT_EQ(chain_.Row(1, 1), "11111111");
  EXPECT_EQ(chain_.Row(1, 2), "01010101");
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED | SIM_STATUS_DONE);
  EXPECT_EQ(Set(), "dead-row=1:1;");
}

TEST_F(SimFault, ALaterDeadRowReplacesTheFirst) {
  chain_.SetFaults("dead-row=1:1;dead-row=1:2");
  EXPECT_EQ(Set(), "dead-row=1:2;");
  ProgramRows();
  EXPECT_EQ(chain_.Row(1, 1), "01010101");
  EXPECT_EQ(chain_.Row(1, 2), "11111111");
}

// A row that had its clocks before the fault was set is programmed, though nobody has looked yet.
TEST_F(SimFault, DeadRowDoesNotReachBack) {
  ProgramRows();
  chain_.SetFaults("dead-row=1:2");
  EXPECT_EQ(chain_.Row(1, 2), "01010101");
  chain_.SetRow(1, 2, "11111111");
  probe_.Instruct(SIM_ADDRESS);
  probe_.ScanDr(Bits(2, 32));
  probe_.Instruct(SIM_PROGRAM);
  probe_.ScanDr("00000000");
  probe_.Idle(1);
  chain_.ClearFaults();
  EXPECT_EQ(chain_.Row(1, 2), "11111111");
}

TEST_F(SimFault, OnlyDeviceMissingLeavesAWire) {
  chain_.SetFaults("missing=1");
  EXPECT_EQ(probe_.ScanDr("1100101"), "1100101");
  EXPECT_EQ(probe_.ScanIr("00110"), "00110");
  EXPECT_EQ(chain_.instruction(1), 6u);
}

TEST_F(SimFault, ClearedAllAtOnce) {
  const std::string all = "tdo-stuck-1;flip=4:2;dead-row=1:0;missing=1;";
  chain_.SetFaults("missing=1;dead-row=1:0;flip=4:2;tdo-stuck-1");
  EXPECT_EQ(Set(), all);
  chain_.ClearFaults();
  EXPECT_EQ(Set(), "");
  EXPECT_EQ(ReadIdcode(), kIdcode);
  ProgramRows();
  EXPECT_EQ(chain_.Row(1, 0), "01010101");
}

TEST_F(SimFault, WhatCannotBeIsRefusedAndChangesNothing) {
  chain_.SetFaults("dead-row=1:2");
  const sim_fault impossible[] = {
      {SIM_FAULT_FLIP, 0, 5},       {SIM_FAULT_DEAD_ROW, 1, 3}, {SIM_FAULT_DEAD_ROW, 0, 0},
      {SIM_FAULT_DEAD_ROW, 2, 0},   {SIM_FAULT_MISSING, 0, 0},  {SIM_FAULT_MISSING, 2, 0},
      {SIM_FAULT_KIND_COUNT, 1, 1},
  };
  for (const sim_fault &fault : impossible) {
    EXPECT_EQ(sim_chain_set_fault(chain_.get(), &fault), -1);
    EXPECT_EQ(Set(), "dead-row=1:2;");
  }
  EXPECT_THROW(chain_.SetFaults("missing=9"), std::invalid_argument);
}

TEST(SimFaultChain, MissingDeviceShortensTheChain) {
  for (unsigned missing = 1; missing <= 3; ++missing) {
    sim::Chain chain("idcode=0x11111111;idcode=0x22222223;idcode=0x33333333");
    Probe probe(chain);
    probe.Reset();
    chain.SetFaults("missing=" + std::to_string(missing));
    const uint32_t idcodes[] = {0x11111111, 0x22222223, 0x33333333};
    std::string expected;
    for (unsigned device = 3; device >= 1; --device) {
      expected += device == missing ? "" : Bits(idcodes[device - 1], 32);
    }
    EXPECT_EQ(probe.ScanDr(std::string(64, '0')), expected) << missing;
    EXPECT_EQ(probe.ScanIr(std::string(16, '1')), "1000000010000000") << missing;
    EXPECT_EQ(probe.ScanDr("1111"), "0011") << missing;
  }
}

TEST(SimFaultChain, LaterFaultInAnotherDeviceReplaces) {
  sim::Chain chain("idcode=1,part=2x8;idcode=3,part=2x8");
  Probe probe(chain);
  probe.Reset();
  chain.SetFaults("dead-row=2:1;dead-row=1:0;missing=2;missing=1");
  sim_fault fault = {};
  EXPECT_EQ(sim_chain_fault(chain.get(), SIM_FAULT_DEAD_ROW, &fault), 1);
  EXPECT_EQ(fault.first, 1u);
  EXPECT_EQ(sim_chain_fault(chain.get(), SIM_FAULT_MISSING, &fault), 1);
  EXPECT_EQ(fault.first, 1u);
  EXPECT_EQ(probe.ScanDr(std::string(33, '1')), Bits(3, 32) + "1");
  chain.SetFaults("dead-row=2:1");
  EXPECT_EQ(sim_chain_fault(chain.get(), SIM_FAULT_DEAD_ROW, &fault), 1);
  EXPECT_EQ(fault.first, 2u);
}

// A device that goes missing under way keeps its place until the next Capture.
TEST(SimFaultChain, MissingFromTheNextCaptureOn) {
  sim::Chain chain("bypass;bypass");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("100");
  chain.SetFaults("missing=2");
  std::string tdo;
  for (int bit = 0; bit < 4; ++bit) {
    tdo.push_back(probe.Clock(bit == 3, true));
  }
  probe.Walk("10");
  EXPECT_EQ(tdo, "0011");
  EXPECT_EQ(probe.ScanDr("1111"), "0111");
}

TEST(SimFaultText, NamesBothWays) {
  for (int kind = 0; kind < SIM_FAULT_KIND_COUNT; ++kind) {
    const char *name = sim_fault_name(static_cast<sim_fault_kind>(kind));
    EXPECT_EQ(sim_fault_kind_of(name), kind) << name;
  }
  EXPECT_STREQ(sim_fault_name(SIM_FAULT_FLIP), "flip");
  EXPECT_STREQ(sim_fault_name(SIM_FAULT_KIND_COUNT), "?");
  for (const char *name : {"", "fli", "flips", "FLIP", "tdo-stuck"}) {
    EXPECT_EQ(sim_fault_kind_of(name), SIM_FAULT_KIND_COUNT) << name;
  }
}

TEST(SimFaultText, FormatIsCutAndCountsOn) {
  const sim_fault fault = {SIM_FAULT_FLIP, 4294967295u, 10};
  const std::string whole = "flip=4294967295:10";
  for (size_t size = 0; size < whole.size() + 3; ++size) {
    std::vector<char> text(size + 1, '#');
    EXPECT_EQ(sim_fault_format(&fault, text.data(), size), whole.size());
    EXPECT_EQ(text[size], '#');
    if (size != 0) {
      EXPECT_EQ(std::string(text.data()), whole.substr(0, size - 1));
    }
  }
}

TEST(SimFaultText, ListIsRead) {
  sim_fault faults[3] = {};
  sim_u32 count = 99;
  sim_text_error error = {};
  EXPECT_EQ(sim_faults_parse(" dead-row = 2 : 0x10;\n missing=3 ; tdo-stuck-0; flip=1:2", faults, 3,
                             &count, &error),
            0);
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(faults[0].kind, SIM_FAULT_DEAD_ROW);
  EXPECT_EQ(faults[0].first, 2u);
  EXPECT_EQ(faults[0].second, 16u);
  EXPECT_EQ(faults[1].kind, SIM_FAULT_MISSING);
  EXPECT_EQ(faults[1].first, 3u);
  EXPECT_EQ(faults[2].kind, SIM_FAULT_TDO_STUCK_0);
  EXPECT_EQ(sim_faults_parse("  ", nullptr, 0, &count, &error), 0);
  EXPECT_EQ(count, 0u);
}

struct BadFault {
  const char *text;
  size_t position;
  const char *reason;
};

TEST(SimFaultText, ErrorsNameTheirPlace) {
  const BadFault bad[] = {
      {"flop=1:2", 0, "unknown fault"},
      {";", 0, "a fault is expected"},
      {"tdo-stuck-1;", 12, "a fault is expected"},
      {"tdo-stuck-1 tdo-stuck-0", 12, "';' is expected"},
      {"tdo-stuck-1=1", 11, "';' is expected"},
      {"missing", 7, "'=' is expected"},
      {"missing=", 8, "a number is expected"},
      {"missing=0x", 9, "';' is expected"},
      {"flip=3", 6, "':' is expected"},
      {"flip=3:", 7, "a number is expected"},
      {"flip=3:-1", 7, "a number is expected"},
      {"flip=4294967296:1", 5, "the number is larger than 32 bits"},
  };
  for (const BadFault &test : bad) {
    sim_u32 count = 77;
    sim_text_error error = {};
    EXPECT_EQ(sim_faults_parse(test.text, nullptr, 0, &count, &error), -1) << test.text;
    EXPECT_EQ(error.position, test.position) << test.text;
    EXPECT_STREQ(error.reason, test.reason) << test.text;
    EXPECT_EQ(count, 77u);
  }
}

}  // namespace
