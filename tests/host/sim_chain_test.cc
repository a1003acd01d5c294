// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The simulated chain's registers: captures, lengths and order, for chains of one to eight devices.
#include <gtest/gtest.h>

#include <algorithm>

#include "sim_probe.h"

namespace {

using sim_test::Bits;
using sim_test::Probe;
using sim_test::Repeat;

constexpr uint32_t kIdcodes[8] = {0x0A014C35, 0x11111111, 0x23456789, 0xFFFFFFFF,
                                  0x80000001, 0x5A5A5A5B, 0x00000013, 0x76543211};

// A chain of the first n IDCODEs, device 1 first.
std::string ChainText(unsigned devices) {
  std::string text;
  for (unsigned i = 0; i < devices; ++i) {
    text += (i == 0 ? "idcode=" : ";idcode=") + std::to_string(kIdcodes[i]);
  }
  return text;
}

// Instructions of n devices as TDI bits: the device nearest TDO, the last, first.
std::string Instructions(const std::vector<uint8_t> &instructions) {
  std::string bits;
  for (auto it = instructions.rbegin(); it != instructions.rend(); ++it) {
    bits += Bits(*it, 8);
  }
  return bits;
}

class SimChainLength : public ::testing::TestWithParam<unsigned> {
 protected:
  void SetUp() override {
    probe_.Reset();
  }

  const unsigned n_ = GetParam();
  sim::Chain chain_{ChainText(n_)};
  Probe probe_{chain_};
};

TEST_P(SimChainLength, InstructionCaptureEndsInOne) {
  EXPECT_EQ(probe_.ScanIr(std::string(8 * n_, '1')), Repeat("10000000", n_));
}

TEST_P(SimChainLength, ResetSelectsTheIdcodesLastDeviceFirst) {
  std::string expected;
  for (unsigned i = n_; i-- > 0;) {
    expected += Bits(kIdcodes[i], 32);
  }
  EXPECT_EQ(probe_.ScanDr(std::string(32 * n_, '0')), expected);
}

TEST_P(SimChainLength, BypassDelaysByOneBitADevice) {
  probe_.ScanIr(std::string(8 * n_, '1'));
  const std::string data = "110100111000101101";
  EXPECT_EQ(probe_.ScanDr(data), std::string(n_, '0') + data.substr(0, data.size() - n_));
}

TEST_P(SimChainLength, EachDeviceTakesItsOwnInstruction) {
  std::vector<uint8_t> instructions;
  for (unsigned i = 0; i < n_; ++i) {
    instructions.push_back(static_cast<uint8_t>(0x81 + 3 * i));
  }
  probe_.ScanIr(Instructions(instructions));
  for (unsigned i = 0; i < n_; ++i) {
    EXPECT_EQ(chain_.instruction(i + 1), instructions[i]);
  }
}

TEST_P(SimChainLength, OneIdcodeThroughTheBypassOfTheOthers) {
  for (unsigned target = 1; target <= n_; ++target) {
    std::vector<uint8_t> instructions(n_, 0xFF);
    instructions[target - 1] = 6;
    probe_.ScanIr(Instructions(instructions));
    const unsigned offset = n_ - target;
    EXPECT_EQ(probe_.ScanDr(std::string(offset + 32, '1')).substr(offset),
              Bits(kIdcodes[target - 1], 32));
  }
}

INSTANTIATE_TEST_SUITE_P(OneToEight, SimChainLength, ::testing::Range(1u, 9u));

TEST(SimChain, UnknownInstructionIsBypass) {
  sim::Chain chain("idcode=0x0A014C35,part=2x8");
  Probe probe(chain);
  probe.Reset();
  for (unsigned instruction = 0; instruction < 256; ++instruction) {
    const std::vector<unsigned> known = {0x06, 0x30, 0x31, 0x32, 0x40};
    if (std::count(known.begin(), known.end(), instruction) != 0) {
      continue;
    }
    probe.Instruct(static_cast<uint8_t>(instruction));
    EXPECT_EQ(probe.ScanDr("1011"), "0101") << instruction;
  }
}

TEST(SimChain, IdcodeInstructionIsPerDevice) {
  sim::Chain chain("idcode=0x0A014C35,instruction=224;idcode=0x11111111");
  Probe probe(chain);
  probe.Reset();
  EXPECT_EQ(chain.instruction(1), 224u);
  EXPECT_EQ(chain.instruction(2), 6u);
  probe.ScanIr(Instructions({224, 224}));
  EXPECT_EQ(probe.ScanDr(std::string(33, '0')), "0" + Bits(0x0A014C35, 32));
  probe.ScanIr(Instructions({6, 6}));
  EXPECT_EQ(probe.ScanDr(std::string(33, '0')), Bits(0x11111111, 32) + "0");
}

TEST(SimChain, DeviceWithoutIdcodeResetsToBypass) {
  sim::Chain chain("idcode=0x11111111;bypass");
  Probe probe(chain);
  probe.Reset();
  EXPECT_EQ(chain.instruction(2), 0xFFu);
  EXPECT_EQ(probe.ScanDr(std::string(33, '0')), "0" + Bits(0x11111111, 32));
  probe.ScanIr(Instructions({0xFF, 6}));
  EXPECT_EQ(probe.ScanDr("1111"), "0011");
}

TEST(SimChain, ScanIsResumedAfterAPause) {
  sim::Chain chain("idcode=0x0A014C35");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("100");
  std::string tdo;
  for (int bit = 0; bit < 32; ++bit) {
    const bool pause = bit == 0 || bit == 12 || bit == 31;
    tdo.push_back(probe.Clock(pause));
    if (pause && bit != 31) {
      probe.Walk("00010");
    }
  }
  probe.Walk("10");
  EXPECT_EQ(tdo, Bits(0x0A014C35, 32));
}

// An instruction that is split over a pause is whole at Update-IR.
TEST(SimChain, PausedInstructionIsWhole) {
  sim::Chain chain("idcode=1");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("1100");
  const std::string bits = Bits(0x5C, 8);
  for (int bit = 0; bit < 8; ++bit) {
    probe.Clock(bit == 2 || bit == 7, bits[bit] == '1');
    if (bit == 2) {
      probe.Walk("010");
    }
  }
  EXPECT_EQ(chain.instruction(1), 6u);
  probe.Walk("10");
  EXPECT_EQ(chain.instruction(1), 0x5Cu);
}

// Straight from Capture to Exit1: the captured 01 is what is loaded.
TEST(SimChain, InstructionScanWithoutShiftLoadsTheCapture) {
  sim::Chain chain("idcode=0x0A014C35");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("110110");
  EXPECT_EQ(chain.state(), SIM_RUN_TEST_IDLE);
  EXPECT_EQ(chain.instruction(1), 0x01u);
}

TEST(SimChain, InstructionRegistersOfAnyLength) {
  sim::Chain chain("idcode=0x13,ir=10,instruction=0x3C6;ir=2;part=2x8,ir=7");
  Probe probe(chain);
  probe.Reset();
  EXPECT_EQ(chain.instruction(1), 0x3C6u);
  EXPECT_EQ(chain.instruction(2), 3u);
  EXPECT_EQ(chain.instruction(3), 0x7Fu);
  EXPECT_EQ(probe.ScanDr("00" + Bits(0, 32)), "00" + Bits(0x13, 32));
  EXPECT_EQ(probe.ScanIr(Bits(SIM_STATUS, 7) + Bits(2, 2) + Bits(0x3C5, 10)),
            Bits(1, 7) + Bits(1, 2) + Bits(1, 10));
  EXPECT_EQ(chain.instruction(1), 0x3C5u);
  EXPECT_EQ(chain.instruction(2), 2u);
  EXPECT_EQ(chain.instruction(3), 0x40u);
  EXPECT_EQ(probe.ScanDr("1111111111111"), "0000000000111");
}

TEST(SimChain, TheInstructionOfTheIdcodeIsNotThePartsAsWell) {
  sim::Chain chain("idcode=0x13,instruction=0x10,part=2x8");
  Probe probe(chain);
  probe.Reset();
  probe.Instruct(SIM_ENABLE);
  EXPECT_EQ(probe.ScanDr(Bits(0, 32)), Bits(0x13, 32));
  EXPECT_EQ(chain.status(1), 0);
}

TEST(SimChain, MoreBitsThanTheChainComeOutAgain) {
  sim::Chain chain("idcode=0x0A014C35");
  Probe probe(chain);
  probe.Reset();
  const std::string data = Bits(0x123456789ABCDEF, 60);
  EXPECT_EQ(probe.ScanDr(data), Bits(0x0A014C35, 32) + data.substr(0, 28));
}

TEST(SimChain, PowerCycleResets) {
  sim::Chain chain("idcode=0x0A014C35,part=2x8");
  Probe probe(chain);
  probe.Reset();
  probe.Instruct(SIM_ENABLE);
  EXPECT_EQ(chain.status(1), SIM_STATUS_ENABLED);
  sim_chain_power_cycle(chain.get());
  EXPECT_EQ(chain.state(), SIM_TEST_LOGIC_RESET);
  EXPECT_EQ(chain.instruction(1), 6u);
  EXPECT_EQ(chain.status(1), 0);
}

TEST(SimChain, WithoutDevicesIsAWire) {
  sim::Chain chain(std::vector<sim_device_config>{});
  Probe probe(chain);
  for (const bool level : {false, true, false}) {
    chain.Write(SIM_TDI, level);
    EXPECT_EQ(chain.Tdo(), level);
  }
  probe.Reset();
  EXPECT_EQ(probe.ScanDr("10110"), "10110");
  EXPECT_EQ(probe.ScanIr("0010"), "0010");
}

TEST(SimChain, DevicesThatAreNotThere) {
  sim::Chain chain("idcode=0x11111111;idcode=3,part=4x9");
  sim_chain *c = chain.get();
  EXPECT_EQ(sim_chain_device_count(c), 2u);
  EXPECT_EQ(sim_chain_device(c, 0), nullptr);
  EXPECT_EQ(sim_chain_device(c, 3), nullptr);
  EXPECT_EQ(sim_chain_device(c, 2)->row_bits, 9u);
  EXPECT_EQ(sim_chain_instruction(c, 0), 0xFFu);
  EXPECT_EQ(sim_chain_status(c, 3), 0);
  EXPECT_EQ(sim_chain_row(c, 1, 0), nullptr);
  EXPECT_EQ(sim_chain_row(c, 2, 4), nullptr);
  EXPECT_NE(sim_chain_row(c, 2, 3), nullptr);
}

TEST(SimChain, ImpossibleConfigurationsHaveNoSize) {
  const auto size = [](const sim_device_config &device) {
    const sim_config config = {&device, 1, 0};
    return sim_chain_size(&config);
  };
  sim_device_config device = {};
  EXPECT_GT(size(device), 0u);
  device.ir_bits = 1;
  EXPECT_EQ(size(device), 0u);
  device.ir_bits = 33;
  EXPECT_EQ(size(device), 0u);
  device = {};
  device.idcode = 1;
  device.idcode_instruction = 0xFE;
  EXPECT_GT(size(device), 0u);
  device.idcode_instruction = 0xFF;
  EXPECT_EQ(size(device), 0u);
  device.ir_bits = 9;
  EXPECT_GT(size(device), 0u);
  device.bypass_code = 0x1FF;
  EXPECT_GT(size(device), 0u);
  device.bypass_code = 0x200;
  EXPECT_EQ(size(device), 0u);
  device.bypass_code = 0xFF;
  EXPECT_EQ(size(device), 0u) << "it is the IDCODE's instruction";
  device = {};
  device.rows = 3;
  EXPECT_EQ(size(device), 0u);
  device.row_bits = 1;
  EXPECT_GT(size(device), 0u);
  device.rows = device.row_bits = 0xFFFFFFFF;
  EXPECT_EQ(size(device), 0u);
  device.rows = 2;
  device.row_bits = 134217728;
  EXPECT_GT(size(device), 33554432u);
  ++device.row_bits;
  EXPECT_EQ(size(device), 0u);
  const sim_config config = {&device, 1, 0};
  uint64_t memory[4];
  EXPECT_EQ(sim_chain_create(memory, &config), nullptr);
}

TEST(SimChain, NoMemoryIsNoChain) {
  const sim_config config = {nullptr, 0, 0};
  EXPECT_EQ(sim_chain_create(nullptr, &config), nullptr);
}

// Not a byte past sim_chain_size is touched, by making the chain or by using it up to the last row.
TEST(SimChain, StaysInItsMemory) {
  const sim_device_config devices[2] = {{5, 0, 3, 13, 2, 1, 1, 0, 0},
                                        {7, 224, 5, 40, 0, 0, 0, 0, 0}};
  const sim_config config = {devices, 2, 101};
  const size_t size = sim_chain_size(&config);
  std::vector<uint64_t> memory(size / 8 + 9, 0xA5A5A5A5A5A5A5A5);
  ASSERT_EQ(size % 8, 0u);
  sim_chain *chain = sim_chain_create(memory.data(), &config);
  ASSERT_EQ(static_cast<void *>(chain), memory.data());
  for (int i = 0; i < 3000; ++i) {
    sim_chain_write(chain, SIM_TMS, i * 37 % 11 < 4);
    sim_chain_write(chain, SIM_TDI, i * 53 % 7 < 3);
    sim_chain_write(chain, SIM_TCK, i % 2);
  }
  *sim_chain_row(chain, 2, 4) = 0;
  for (size_t i = size / 8; i < memory.size(); ++i) {
    EXPECT_EQ(memory[i], 0xA5A5A5A5A5A5A5A5);
  }
}

// The longest register has its room also where nothing follows it in memory.
TEST(SimChain, LongestRegisterHasRoom) {
  const sim_device_config device = {0, 0, 1, 1000, 0, 0, 0, 0, 0};
  const sim_config config = {&device, 1, 0};
  const size_t size = sim_chain_size(&config);
  std::vector<uint64_t> memory(size / 8 + 20, 0xA5A5A5A5A5A5A5A5);
  sim_chain *chain = sim_chain_create(memory.data(), &config);
  const auto clock = [chain](bool tms, bool tdi) {
    sim_chain_write(chain, SIM_TMS, tms);
    sim_chain_write(chain, SIM_TDI, tdi);
    sim_chain_write(chain, SIM_TCK, 1);
    sim_chain_write(chain, SIM_TCK, 0);
  };
  const auto walk = [&clock](const std::string &tms) {
    for (const char level : tms) {
      clock(level == '1', false);
    }
  };
  walk("01100");
  for (unsigned bit = 0; bit < 8; ++bit) {
    clock(bit == 7, SIM_READ >> bit & 1);
  }
  walk("1100");
  for (int bit = 0; bit < 2000; ++bit) {
    clock(false, bit % 2 != 0);
  }
  EXPECT_EQ(sim_chain_state(chain), SIM_SHIFT_DR);
  EXPECT_EQ(sim_chain_instruction(chain, 1), SIM_READ);
  for (size_t i = size / 8; i < memory.size(); ++i) {
    EXPECT_EQ(memory[i], 0xA5A5A5A5A5A5A5A5);
  }
}

}  // namespace
