// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The chip IDCODE: read, kept and logged.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

constexpr uint32_t kIdcode = 0x0A014C35;

const char kNoIdcode[] = "Error: Cannot Read CHIP IDCODE\r\n";

class DeviceIdcodeTest : public EngineTest {
 protected:
  DeviceIdcodeTest() {
    Quorlan_MemSet(0);
    Target(kIdcode);
  }
  // TDO reads the bits of `idcode` over and over, the least significant first.
  void Target(uint32_t idcode) {
    pins.OnRead(
        [idcode, bit = 0]() mutable { return static_cast<int>(idcode >> (bit++ & 31) & 1); });
  }
  static Messages Idcode(std::vector<std::string> bytes) {
    Messages messages = {shim::Log(43, 2, "DECODE CHIP : ")};
    for (const std::string &byte : bytes) {
      messages.push_back(shim::Log(43, 2, byte));
    }
    return messages;
  }
};

TEST_F(DeviceIdcodeTest, IsLoggedInFiveRecords) {
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(), Idcode({"0a", "01", "4c", "35"}));
}

TEST_F(DeviceIdcodeTest, IsKept) {
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(String(g_chip_idcode), "00001010000000010100110000110101");
  EXPECT_EQ(shim::SizeOf(g_chip_idcode), 33u);
  EXPECT_EQ(shim::LiveRequests(), 2u) << "the vector and the string";
}

TEST_F(DeviceIdcodeTest, ZerosAndOnes) {
  Target(0);
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(), Idcode({"00", "00", "00", "00"}));
  shim::ClearMessages();
  Target(0xFFFFFFFF);
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(), Idcode({"ff", "ff", "ff", "ff"}));
  AllowLeaks(1);
}

TEST_F(DeviceIdcodeTest, PinCalls) {
  Target(0);
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(pins.Text(), Periods({{2, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I0 M0 K1"},
                                  {2, "K0 I1 K1"},
                                  {4, "K0 I0 K1"},
                                  {1, "K0 I0 M1 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"},
                                  {1, "K0 M1 K1"},
                                  {2, "K0 M0 K1"},
                                  {1, "K0 I1 M0 R0 K1"},
                                  {30, "K0 I1 R0 K1"},
                                  {1, "K0 I1 M1 R0 K1"},
                                  {1, "K0 M1 K1"},
                                  {1, "K0 M0 K1"}}));
}

TEST_F(DeviceIdcodeTest, TakesTheInstructionOfTheSession) {
  g_idcode_pub = 224;
  Quorlan_ReadIdCode(1, 1);
  EXPECT_NE(pins.Text().find("K0 I0 M0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I1 K1 K0 I1 K1 "
                             "K0 I1 M1 K1"),
            std::string::npos);
  EXPECT_EQ(g_idcode_pub, 224u);
}

TEST_F(DeviceIdcodeTest, ReadsTheAddressedDevice) {
  Quorlan_ReadIdCode(2, 3);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201, 4, 6, 6, 6, 34, 33, 5}));
  EXPECT_EQ(pins.reads(), 32u);
  EXPECT_EQ(shim::Messages(), Idcode({"0a", "01", "4c", "35"}));
}

TEST_F(DeviceIdcodeTest, EarlierStringIsOverwrittenNotFreed) {
  uint8_t *const old = shim::NewString("0");
  g_chip_idcode = old;
  Quorlan_ReadIdCode(1, 1);
  EXPECT_NE(g_chip_idcode, old);
  EXPECT_TRUE(shim::IsLive(old));
}

TEST_F(DeviceIdcodeTest, StoppedRunCannotRead) {
  g_chip_idcode = shim::NewString("0");
  g_status = 0;
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 2, kNoIdcode)}));
  EXPECT_EQ(g_chip_idcode, nullptr);
  EXPECT_EQ(pins.Text(), "");
}

TEST_F(DeviceIdcodeTest, ThirtyOneCharactersAreReported) {
  g_tdr_len = 1;  // has outlived its vector: the range is one bit short
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(),
            (Messages{shim::Log(43, 2, "Error: CHIP IDCODE is invalid current size is 31\r\n")}));
  EXPECT_EQ(String(g_chip_idcode), "0001010000000010100110000110101");
}

TEST_F(DeviceIdcodeTest, AStringThatAReadingEndsIsReported) {
  // 48 + 208 modulo 256 is 0; the string is as long as what was read after it.
  int bit = 0;
  pins.OnRead([&] { return bit++ == 25 ? 208 : 1; });
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(),
            (Messages{shim::Log(43, 2, "Error: CHIP IDCODE is invalid current size is 6\r\n")}));
}

TEST_F(DeviceIdcodeTest, WithoutMemoryForTheInstructionTheReadGoesOn) {
  shim::FailAllocation(1);
  Quorlan_ReadIdCode(1, 1);
  EXPECT_EQ(shim::Messages(), Idcode({"0a", "01", "4c", "35"}));
  EXPECT_EQ(pins.Text().substr(0, 23), "K0 M1 K1 K0 M0 K1 K0 M0");
}

TEST_F(DeviceIdcodeTest, WithoutMemoryForTheReadItIsReported) {
  for (const uint64_t n : {2, 3, 4, 5, 6}) {
    shim::ClearMessages();
    shim::FailAllocation(n);
    Quorlan_ReadIdCode(1, 1);
    EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 2, kNoIdcode)})) << n;
    EXPECT_EQ(g_chip_idcode, nullptr) << n;
    EXPECT_EQ(shim::LiveRequests(), 1u) << n;
  }
}

TEST_F(DeviceIdcodeTest, WithoutMemoryForTheBytesItIsSilent) {
  shim::FailAllocation(7);
  Quorlan_ReadIdCode(1, 1);
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(String(g_chip_idcode), "00001010000000010100110000110101");
}

TEST_F(DeviceIdcodeTest, EveryFailureLeavesNothingBehind) {
  for (uint64_t n = 1; n <= 9; ++n) {
    for (const bool all : {false, true}) {
      Quorlan_FreeMemory();
      g_status = 1;
      all ? shim::FailAllocationsFrom(n) : shim::FailAllocation(n);
      Quorlan_ReadIdCode(2, 3);
      shim::FailAllocation(0);
      Quorlan_FreeMemory();
      EXPECT_EQ(shim::LiveRequests(), 0u) << n;
      g_status = 1;
      shim::ClearMessages();
      Target(kIdcode);
      Quorlan_ReadIdCode(1, 1);
      EXPECT_EQ(shim::Messages(), Idcode({"0a", "01", "4c", "35"})) << n;
    }
  }
}

}  // namespace
