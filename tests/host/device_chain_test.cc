// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One device of a chain: loading its instruction, reading its data register.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

class DeviceChainTest : public EngineTest {
 protected:
  DeviceChainTest() {
    Quorlan_MemSet(0);
  }

  // The data bits of the vector that was built, most significant bit of each byte first, as
  // characters; `walk` is the length of what precedes them.
  static std::string DataBits(size_t walk) {
    std::string bits;
    const std::string vector = String(g_vector);
    for (size_t i = walk; i + 2 < vector.size(); ++i) {
      bits += vector[i] & 0x40 ? '1' : '0';
    }
    return bits;
  }
  static std::string Instruction(uint32_t level, uint32_t total, uint32_t instruction) {
    Quorlan_ExeSirCommand(level, total, instruction);
    return DataBits(4);
  }
  // A read back of zeros, as the places of the bits that were read: "-RR-" (one character a bit).
  std::string ReadPlaces(uint32_t level, uint32_t total, int32_t bits) {
    pins.ClearEvents();
    kfree(Quorlan_ExeSdrRdbkCommand(level, total, bits));
    std::string places;
    for (const shim::PinEvent &event : pins.events()) {
      if (event.line == shim::kTck && event.level == 0) {
        places += '-';
      } else if (event.read) {
        places.back() = 'R';
      }
    }
    return places.size() < 5 ? places : places.substr(3, places.size() - 5);
  }

  const std::string ones = "11111111";
};

TEST_F(DeviceChainTest, SingleDeviceTakesTheInstructionLowBitFirst) {
  EXPECT_EQ(Instruction(1, 1, 6), "01100000");
  EXPECT_EQ(VectorText(), "2A 2A 08 08 08 4C 4C 08 08 08 08 2A 2A 08");
  EXPECT_EQ(pins.reads(), 0u);
}

TEST_F(DeviceChainTest, OthersTakeAllOnes) {
  EXPECT_EQ(Instruction(2, 3, 6), ones + "01100000" + ones);
  EXPECT_EQ(Instruction(1, 3, 6), ones + ones + "01100000");
  EXPECT_EQ(Instruction(3, 3, 6), "01100000" + ones + ones);
  EXPECT_EQ(Instruction(2, 2, 224), "00000111" + ones);
}

TEST_F(DeviceChainTest, LevelsOutsideTheChainAddressNobody) {
  EXPECT_EQ(Instruction(0, 2, 6), ones + ones);
  EXPECT_EQ(Instruction(3, 2, 6), ones + ones);
  EXPECT_EQ(Instruction(0xFFFFFFFF, 2, 6), ones + ones);
}

TEST_F(DeviceChainTest, EmptyChainShiftsNoBits) {
  EXPECT_EQ(Instruction(1, 0, 6), "");
  EXPECT_EQ(VectorText(), "2A 2A 08 08 2A 08");
}

TEST_F(DeviceChainTest, OnlyTheLow8BitsOfTheInstructionCount) {
  EXPECT_EQ(Instruction(1, 1, 0xFFFFFF06), "01100000");
}

TEST_F(DeviceChainTest, InstructionGoesThroughTheStoredPadding) {
  const uint8_t hir = 0xFF;
  g_hir_len = 1;
  Quorlan_GenHeadAndTrailerVec(12, 1, &hir);
  Quorlan_ExeSirCommand(1, 1, 6);
  EXPECT_EQ(VectorText(), "2A 2A 08 08 4C 08 4C 4C 08 08 08 08 2A 2A 08");
}

TEST_F(DeviceChainTest, InstructionBytesAreFreed) {
  Quorlan_ExeSirCommand(2, 3, 6);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 4}));
  EXPECT_EQ(shim::Allocations()[1].flags, shim::kGfpKernel);
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(DeviceChainTest, InstructionWithoutMemoryIsNotShifted) {
  Quorlan_GenVec();
  shim::FailAllocation(1);
  Quorlan_ExeSirCommand(1, 1, 6);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(VectorText(), "08");
  EXPECT_EQ(g_status, 1u);
}

TEST_F(DeviceChainTest, ChainsThatNoBlockHoldsAreNotShifted) {
  for (const uint32_t total : {0xFFFFFFFFu, 0x20000000u, 0x20000001u, 4u << 20}) {
    Quorlan_ExeSirCommand(1, total, 6);
  }
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(shim::Allocations().size(), 1u);
}

TEST_F(DeviceChainTest, SingleDeviceIsReadWithoutBypassBits) {
  EXPECT_EQ(ReadPlaces(1, 1, 32), std::string(32, 'R'));
}

TEST_F(DeviceChainTest, BypassBitsComeOutFirst) {
  EXPECT_EQ(ReadPlaces(2, 3, 32), "-" + std::string(32, 'R'));
  EXPECT_EQ(ReadPlaces(1, 8, 10), "-------RRRRRRRRRR");
  EXPECT_EQ(ReadPlaces(1, 9, 8), "--------RRRRRRRR");
  EXPECT_EQ(ReadPlaces(8, 8, 3), "RRR");
}

TEST_F(DeviceChainTest, OnesAreShiftedInAndNothingIsExpected) {
  kfree(Quorlan_ExeSdrRdbkCommand(2, 3, 32));
  EXPECT_EQ(VectorText(), "2A 08 08 " + Repeated(32, "4C") + " 6E 2A 08");
}

TEST_F(DeviceChainTest, ReadBitsComeLastFirst) {
  // The bypass bit is 1, then the register's bits.
  const std::string out = "111010000";
  size_t next = 1;
  pins.OnRead([&] { return out[next++] - '0'; });
  uint8_t *bits = Quorlan_ExeSdrRdbkCommand(1, 2, 8);
  EXPECT_EQ(String(bits), "00001011");
  kfree(bits);
}

TEST_F(DeviceChainTest, ReadAllocatesAndFreesItsBlocks) {
  kfree(Quorlan_ExeSdrRdbkCommand(2, 3, 32));
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 6, 6, 6, 34, 33}));
  for (const shim::Allocation &allocation : shim::Allocations()) {
    EXPECT_EQ(allocation.flags, shim::kGfpKernel);
  }
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(DeviceChainTest, WholeBytesNeedNoFurtherOne) {
  kfree(Quorlan_ExeSdrRdbkCommand(1, 1, 32));
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 5, 5, 5, 33, 33}));
}

TEST_F(DeviceChainTest, ReadWithoutMemoryIsNull) {
  for (const uint64_t n : {1, 2, 3}) {
    shim::FailAllocation(n);
    EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, 32), nullptr);
    EXPECT_EQ(shim::LiveRequests(), 1u) << n;
    EXPECT_EQ(pins.Text(), "") << n;
  }
  EXPECT_EQ(shim::FreesOfNull(), 0u) << "only what was had is freed";
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(g_status, 1u);
}

TEST_F(DeviceChainTest, ReadWithoutMemoryForTheCaptureIsNull) {
  for (const uint64_t n : {4, 5}) {
    shim::FailAllocation(n);
    EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, 32), nullptr);
    EXPECT_EQ(shim::LiveRequests(), 1u) << n;
    EXPECT_EQ(pins.reads(), n == 4 ? 0u : 32u) << n;
  }
}

TEST_F(DeviceChainTest, StoppedRunReadsNothing) {
  g_status = 0;
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, 32), nullptr);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(DeviceChainTest, NoBitsAreNull) {
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, 0), nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 2A 08");
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 3, 0), nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 4C 6E 2A 08");
  EXPECT_EQ(pins.reads(), 0u);
}

TEST_F(DeviceChainTest, ALevelPastTheChainReadsNothing) {
  // The offset is 2^32 - 1, so 31 bits are shifted and none lies in the range.
  EXPECT_EQ(ReadPlaces(2, 1, 32), std::string(31, '-'));
}

TEST_F(DeviceChainTest, LengthsThatNoBlockHoldsReadNothing) {
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, -1), nullptr);
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, 2147483647), nullptr);
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 1, -2147483647 - 1), nullptr);
  EXPECT_EQ(Quorlan_ExeSdrRdbkCommand(1, 0xFFFFFFFF, 1), nullptr);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

}  // namespace
