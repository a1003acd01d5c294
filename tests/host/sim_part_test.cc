// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The programmable part of a simulated device: what its instructions do, and for how long they need
// Run-Test/Idle.
#include <gtest/gtest.h>

#include "sim_probe.h"

namespace {

using sim_test::Bits;
using sim_test::Probe;

constexpr unsigned kErase = 10;
constexpr unsigned kProgram = 4;
constexpr unsigned kRowBits = 12;
const std::string kOnes(kRowBits, '1');
const std::string kZeros(kRowBits, '0');
const std::string kData = "101100111000";

class SimPart : public ::testing::Test {
 protected:
  SimPart() {
    probe_.Reset();
  }

  void Enable() {
    probe_.Instruct(SIM_ENABLE);
  }
  void Erase(unsigned clocks = kErase) {
    probe_.Instruct(SIM_ERASE);
    probe_.Idle(clocks);
  }
  void Address(uint32_t row) {
    probe_.Instruct(SIM_ADDRESS);
    probe_.ScanDr(Bits(row, 32));
  }
  void Program(const std::string &data, unsigned clocks = kProgram) {
    probe_.Instruct(SIM_PROGRAM);
    probe_.ScanDr(data);
    probe_.Idle(clocks);
  }
  std::string Read() {
    probe_.Instruct(SIM_READ);
    return probe_.ScanDr(kZeros);
  }
  // The status register as it comes out of TDO.
  std::string Status() {
    probe_.Instruct(SIM_STATUS);
    return probe_.ScanDr("00000000");
  }
  void EnableAndErase() {
    Enable();
    Erase();
  }

  sim::Chain chain_{"idcode=0x0A014C35,part=6x12,erase=10,program=4"};
  Probe probe_{chain_};
};

TEST_F(SimPart, EraseTakesAtItsLastClock) {
  for (unsigned clocks = 0; clocks <= kErase; ++clocks) {
    chain_.SetRow(1, 5, kData);
    Enable();
    Erase(clocks);
    EXPECT_EQ(chain_.Row(1, 5), clocks == kErase ? kOnes : kData) << clocks;
    EXPECT_EQ(chain_.Row(1, 0), clocks == kErase ? kOnes : kZeros) << clocks;
    probe_.Instruct(SIM_DISABLE);
  }
}

TEST_F(SimPart, AClockShortTheEraseIsLostForGood) {
  Enable();
  Erase(kErase - 1);
  EXPECT_EQ(Read(), kZeros);
  probe_.Idle(100);
  EXPECT_EQ(chain_.Row(1, 0), kZeros);
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED | SIM_STATUS_FAILED);
}

TEST_F(SimPart, ProgramTakesAtItsLastClock) {
  for (unsigned clocks = 0; clocks <= kProgram; ++clocks) {
    EnableAndErase();
    Address(2);
    Program(kData, clocks);
    EXPECT_EQ(chain_.Row(1, 2), clocks == kProgram ? kData : kOnes) << clocks;
    Address(2);
    EXPECT_EQ(Read(), clocks == kProgram ? kData : kOnes) << clocks;
  }
}

// The clock that enters Run-Test/Idle and the one that leaves it do not count.
TEST_F(SimPart, OnlyClocksThatStayInIdleCount) {
  EnableAndErase();
  Address(0);
  Program(kData, kProgram - 1);
  for (unsigned i = 0; i < 2 * kProgram; ++i) {
    probe_.Instruct(SIM_BYPASS);
    probe_.ScanDr("1");
  }
  EXPECT_EQ(chain_.Row(1, 0), kOnes);
  probe_.Idle(1);
  EXPECT_EQ(chain_.Row(1, 0), kData);
}

TEST_F(SimPart, IdleTimeAddsUpAcrossStatusReads) {
  EnableAndErase();
  Address(3);
  Program(kData, kProgram - 1);
  EXPECT_EQ(Status(), Bits(SIM_STATUS_ENABLED | SIM_STATUS_BUSY, 8));
  EXPECT_EQ(probe_.Instruct(SIM_BYPASS), Bits(1 | 1 << 2 | 1 << 3, 8));
  EXPECT_EQ(probe_.Instruct(6), Bits(1 | 1 << 2 | 1 << 3, 8));
  EXPECT_EQ(chain_.Row(1, 3), kOnes);
  probe_.Idle(1);
  EXPECT_EQ(Status(), Bits(SIM_STATUS_ENABLED | SIM_STATUS_DONE, 8));
  EXPECT_EQ(chain_.Row(1, 3), kData);
}

TEST_F(SimPart, EveryProgrammingInstructionAbandonsWhatRuns) {
  for (const sim_instruction next :
       {SIM_ENABLE, SIM_DISABLE, SIM_ERASE, SIM_ADDRESS, SIM_PROGRAM, SIM_READ}) {
    EnableAndErase();
    Address(1);
    Program(kData, kProgram - 1);
    probe_.Instruct(static_cast<uint8_t>(next));
    EXPECT_NE(chain_.status(1) & SIM_STATUS_FAILED, 0) << next;
    probe_.Idle(1);
    EXPECT_EQ(chain_.Row(1, 1), kOnes) << next;
    probe_.Instruct(SIM_DISABLE);
  }
}

TEST_F(SimPart, SecondRowAbandonsTheFirstAndKeepsItsPlace) {
  EnableAndErase();
  Address(1);
  Program(kData, kProgram - 1);
  probe_.ScanDr(kZeros);
  probe_.Idle(kProgram);
  EXPECT_EQ(chain_.Row(1, 1), kOnes);
  EXPECT_EQ(chain_.Row(1, 2), kZeros);
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED | SIM_STATUS_DONE | SIM_STATUS_FAILED);
}

TEST_F(SimPart, ResetAbandonsAndLeavesProgrammingMode) {
  EnableAndErase();
  Address(1);
  Program(kData, kProgram - 1);
  probe_.Reset();
  EXPECT_EQ(chain_.status(1), SIM_STATUS_FAILED);
  probe_.Idle(10);
  EXPECT_EQ(chain_.Row(1, 1), kOnes);
  EXPECT_EQ(probe_.Instruct(SIM_ENABLE), Bits(1 | 1 << 4, 8));
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED);
}

TEST_F(SimPart, ResetAfterTheLastClockKeepsTheRow) {
  EnableAndErase();
  Address(1);
  Program(kData);
  probe_.Reset();
  EXPECT_EQ(chain_.Row(1, 1), kData);
  EXPECT_EQ(chain_.status(1), SIM_STATUS_DONE);
}

TEST_F(SimPart, NotEnabledNothingHappens) {
  chain_.SetRow(1, 0, kData);
  Erase();
  EXPECT_EQ(chain_.Row(1, 0), kData);
  Program(kZeros);
  EXPECT_EQ(chain_.Row(1, 0), kData);
  EXPECT_EQ(Read(), kZeros);
  Address(4);
  EXPECT_EQ(probe_.ScanDr(Bits(0, 32)), Bits(0, 32));
  EXPECT_EQ(Status(), Bits(0, 8));
  Enable();
  EXPECT_EQ(Read(), kData);
}

TEST_F(SimPart, AddressIsHiddenOutsideProgrammingMode) {
  Enable();
  Address(3);
  probe_.Instruct(SIM_DISABLE);
  probe_.Instruct(SIM_ADDRESS);
  EXPECT_EQ(probe_.ScanDr(Bits(0, 32)), Bits(0, 32));
}

TEST_F(SimPart, DisabledNothingHappens) {
  EnableAndErase();
  probe_.Instruct(SIM_DISABLE);
  EXPECT_EQ(chain_.status(1), SIM_STATUS_DONE);
  Program(kData);
  EXPECT_EQ(chain_.Row(1, 0), kOnes);
}

TEST_F(SimPart, AddressReadsBackAndAdvances) {
  EnableAndErase();
  Address(0xDEADBEEF);
  EXPECT_EQ(probe_.ScanDr(Bits(3, 32)), Bits(0xDEADBEEF, 32));
  Program(kData);
  probe_.Instruct(SIM_ADDRESS);
  EXPECT_EQ(probe_.ScanDr(Bits(4, 32)), Bits(4, 32));
  Read();
  probe_.ScanDr(kZeros);
  probe_.Instruct(SIM_ADDRESS);
  EXPECT_EQ(probe_.ScanDr(Bits(0, 32)), Bits(6, 32));
}

TEST_F(SimPart, EnableAgainKeepsAddressAndStatus) {
  EnableAndErase();
  Address(3);
  Enable();
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED | SIM_STATUS_DONE);
  probe_.Instruct(SIM_ADDRESS);
  EXPECT_EQ(probe_.ScanDr(Bits(3, 32)), Bits(3, 32));
  probe_.Instruct(SIM_DISABLE);
  Enable();
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED);
  probe_.Instruct(SIM_ADDRESS);
  EXPECT_EQ(probe_.ScanDr(Bits(3, 32)), Bits(0, 32));
}

TEST_F(SimPart, RowsFollowOneAnother) {
  EnableAndErase();
  Address(0);
  probe_.Instruct(SIM_PROGRAM);
  for (unsigned row = 0; row < 6; ++row) {
    EXPECT_EQ(probe_.ScanDr(Bits(0x9A5 ^ row * 0x111, kRowBits)), kZeros);
    probe_.Idle(kProgram);
  }
  Address(0);
  probe_.Instruct(SIM_READ);
  for (unsigned row = 0; row < 6; ++row) {
    EXPECT_EQ(probe_.ScanDr(kOnes), Bits(0x9A5 ^ row * 0x111, kRowBits)) << row;
  }
  EXPECT_EQ(probe_.ScanDr(kZeros), kOnes);
}

TEST_F(SimPart, ProgrammingOnlyMakesZeros) {
  EnableAndErase();
  Address(0);
  Program("110011001100");
  Address(0);
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED | SIM_STATUS_DONE);
  Program("101010101010");
  EXPECT_EQ(chain_.Row(1, 0), "100010001000");
  EXPECT_EQ(chain_.status(1), SIM_STATUS_ENABLED | SIM_STATUS_DONE | SIM_STATUS_FAILED);
}

TEST_F(SimPart, ProgrammingUnerasedMemoryFails) {
  Enable();
  Program(kData);
  EXPECT_EQ(chain_.Row(1, 0), kZeros);
  EXPECT_NE(chain_.status(1) & SIM_STATUS_FAILED, 0);
}

TEST_F(SimPart, PastTheLastRowFails) {
  EnableAndErase();
  Address(6);
  Program(kZeros);
  for (uint32_t row = 0; row < 6; ++row) {
    EXPECT_EQ(chain_.Row(1, row), kOnes);
  }
  EXPECT_NE(chain_.status(1) & SIM_STATUS_FAILED, 0);
}

// Bit 0 of a row is shifted first and is the least significant bit of its first byte.
TEST_F(SimPart, BitOrderOfARow) {
  EnableAndErase();
  Program("100000000010");
  const uint8_t *row = sim_chain_row(chain_.get(), 1, 0);
  EXPECT_EQ(row[0], 0x01);
  EXPECT_EQ(row[1] & 0x0F, 0x04);
}

TEST_F(SimPart, MemoryStartsProgrammedOrBlank) {
  EXPECT_EQ(chain_.Row(1, 0), kZeros);
  sim::Chain blank("part=2x12,blank");
  EXPECT_EQ(blank.Row(1, 1), kOnes);
}

TEST_F(SimPart, PowerCycleKeepsTheMemory) {
  EnableAndErase();
  Program(kData);
  sim_chain_power_cycle(chain_.get());
  EXPECT_EQ(chain_.Row(1, 0), kData);
}

TEST(SimPartTimes, NoClocksTakeAtOnce) {
  sim::Chain chain("part=2x12,erase=0,program=0");
  Probe probe(chain);
  probe.Reset();
  probe.Instruct(SIM_ENABLE);
  probe.Instruct(SIM_ERASE);
  EXPECT_EQ(chain.Row(1, 1), kOnes);
  probe.Instruct(SIM_PROGRAM);
  probe.ScanDr(kData);
  EXPECT_EQ(chain.Row(1, 0), kData);
}

// Geometries around the edges of bytes and of the IDCODE's length.
TEST(SimPartGeometry, EveryWidth) {
  for (const unsigned bits : {1u, 7u, 8u, 9u, 31u, 32u, 33u, 64u, 1000u}) {
    sim::Chain chain("part=3x" + std::to_string(bits) + ",erase=1,program=1");
    Probe probe(chain);
    probe.Reset();
    probe.Instruct(SIM_ENABLE);
    probe.Instruct(SIM_ERASE);
    probe.Idle(1);
    std::string data;
    for (unsigned bit = 0; bit < bits; ++bit) {
      data.push_back(bit * bit % 7 < 3 ? '0' : '1');
    }
    probe.Instruct(SIM_ADDRESS);
    probe.ScanDr(Bits(1, 32));
    probe.Instruct(SIM_PROGRAM);
    probe.ScanDr(data);
    probe.Idle(1);
    EXPECT_EQ(chain.Row(1, 0), std::string(bits, '1')) << bits;
    EXPECT_EQ(chain.Row(1, 1), data) << bits;
    EXPECT_EQ(chain.Row(1, 2), std::string(bits, '1')) << bits;
  }
}

// Of more bits than the register the last ones stay, wherever the first had got to.
TEST_F(SimPart, LastBitsOfALongerScanStay) {
  for (unsigned extra = 0; extra <= 2 * kRowBits; ++extra) {
    for (const std::string &data : {kData, std::string("010011000111")}) {
      EnableAndErase();
      Address(1);
      Program(std::string(extra, '0') + data);
      EXPECT_EQ(chain_.Row(1, 1), data) << extra;
    }
  }
}

TEST(SimPartChain, ACodeOfBypassStandsBeforeThePartsInstructions) {
  sim::Chain chain("part=2x8,erase=1,bypass-code=0x20;part=2x8,erase=1,bypass-code=0x30");
  Probe probe(chain);
  probe.Reset();
  probe.ScanIr(Bits(SIM_ENABLE, 8) + Bits(SIM_ENABLE, 8));
  probe.ScanIr(Bits(SIM_ERASE, 8) + Bits(SIM_ERASE, 8));
  probe.Idle(1);
  EXPECT_EQ(chain.Row(1, 0), "00000000");
  EXPECT_EQ(chain.Row(2, 0), "11111111");
  probe.ScanIr(Bits(SIM_ADDRESS, 8) + Bits(SIM_ERASE, 8));
  EXPECT_EQ(probe.ScanDr("1111").substr(0, 3), "001") << "both are one bit long";
}

// In a chain of three only the addressed device programs; the others pass the bits on.
TEST(SimPartChain, OnlyTheAddressedDeviceProgrammed) {
  sim::Chain chain("part=2x8,erase=1,program=1;part=2x8,erase=1,program=1;part=2x8");
  Probe probe(chain);
  probe.Reset();
  const auto instruct = [&](uint8_t instruction) {
    probe.ScanIr("11111111" + Bits(instruction, 8) + "11111111");
  };
  instruct(SIM_ENABLE);
  instruct(SIM_ERASE);
  probe.Idle(1);
  instruct(SIM_PROGRAM);
  probe.ScanDr("0" + std::string("10110001") + "0");
  probe.Idle(1);
  EXPECT_EQ(chain.Row(2, 0), "10110001");
  EXPECT_EQ(chain.Row(2, 1), "11111111");
  EXPECT_EQ(chain.Row(1, 0), "00000000");
  EXPECT_EQ(chain.Row(3, 0), "00000000");
  instruct(SIM_ADDRESS);
  probe.ScanDr("0" + Bits(0, 32) + "0");
  instruct(SIM_READ);
  EXPECT_EQ(probe.ScanDr("0000000000"), "0101100010");
}

}  // namespace
