// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Hexadecimal digits as bit strings.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "engine_fixture.h"

namespace {

class UtilHexTest : public shim::Test {
 protected:
  // The bit string of `count` bits, or "null".
  static std::string Bits(const char *hex, int32_t count) {
    uint8_t *bits = Quorlan_HexStrToChars(shim::NewString(hex), count);
    if (bits == nullptr) {
      return "null";
    }
    EXPECT_EQ(shim::SizeOf(bits), static_cast<size_t>(count) + 1);
    const std::string text = String(bits);
    EXPECT_EQ(text.size(), static_cast<size_t>(count));
    kfree(bits);
    return text;
  }

  static shim::Message Invalid(const std::string &digit) {
    return shim::Printk("Error: HexToChar Invalid Hex value " + digit);
  }
};

TEST_F(UtilHexTest, EveryDigit) {
  const char digits[] = "0123456789ABCDEFabcdef";
  const char *const fours[] = {"0000", "0001", "0010", "0011", "0100", "0101", "0110", "0111",
                               "1000", "1001", "1010", "1011", "1100", "1101", "1110", "1111",
                               "1010", "1011", "1100", "1101", "1110", "1111"};
  for (size_t i = 0; i < std::strlen(digits); ++i) {
    auto *out = static_cast<uint8_t *>(shim::NewBlock(5));
    Quorlan_HexToChar(digits[i], out);
    EXPECT_EQ(String(out), fours[i]) << digits[i];
  }
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(UtilHexTest, EveryOtherCharacterIsLoggedAndWritesNothing) {
  auto *out = static_cast<uint8_t *>(shim::NewBlock(5));
  size_t invalid = 0;
  for (int c = -128; c < 128; ++c) {
    const bool digit = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    if (digit) {
      continue;
    }
    Quorlan_HexToChar(static_cast<char>(c), out);
    ++invalid;
    ASSERT_EQ(shim::Messages().size(), invalid) << c;
    EXPECT_EQ(shim::Messages().back(), Invalid(std::string(1, static_cast<char>(c))));
  }
  EXPECT_EQ(invalid, 256u - 22);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(out[i], shim::kFill);
  }
}

TEST_F(UtilHexTest, GIsInvalid) {
  auto *out = static_cast<uint8_t *>(shim::NewBlock(5));
  Quorlan_HexToChar('g', out);
  EXPECT_EQ(shim::Messages(), (Messages{Invalid("g")}));
  EXPECT_EQ(out[0], shim::kFill);
  EXPECT_EQ(out[4], shim::kFill);
}

TEST_F(UtilHexTest, WholeNumber) {
  EXPECT_EQ(Bits("A5", 8), "10100101");
  EXPECT_EQ(Bits("0", 4), "0000");
  EXPECT_EQ(Bits("1f2E", 16), "0001111100101110");
}

TEST_F(UtilHexTest, LowBitsOfANumber) {
  EXPECT_EQ(Bits("A5", 7), "0100101");
  EXPECT_EQ(Bits("A5", 6), "100101");
  EXPECT_EQ(Bits("A5", 5), "00101");
  EXPECT_EQ(Bits("A5", 4), "0101");
  EXPECT_EQ(Bits("A5", 1), "1");
  EXPECT_EQ(Bits("123456", 3), "110");
}

TEST_F(UtilHexTest, MoreBitsThanDigitsIsNull) {
  EXPECT_EQ(Bits("A5", 9), "null");
  EXPECT_EQ(Bits("", 1), "null");
  EXPECT_EQ(Bits("F", std::numeric_limits<int32_t>::max()), "null");
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(UtilHexTest, DigitsThatAreNotNeededAreNotLookedAt) {
  EXPECT_EQ(Bits("zzA5", 8), "10100101");
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(UtilHexTest, InvalidDigitRepeatsTheOneToItsRight) {
  EXPECT_EQ(Bits("1g5", 12), "000101010101");
  EXPECT_EQ(shim::Messages(), (Messages{Invalid("g")}));
}

TEST_F(UtilHexTest, SeveralInvalidDigitsAreLoggedFromTheLast) {
  EXPECT_EQ(Bits("xyA", 12), "101010101010");
  EXPECT_EQ(shim::Messages(), (Messages{Invalid("y"), Invalid("x")}));
}

TEST_F(UtilHexTest, InvalidRightmostDigitIsLoggedAndTheOthersConverted) {
  const std::string bits = Bits("3-", 8);
  EXPECT_EQ(bits.substr(0, 4), "0011");
  EXPECT_EQ(shim::Messages(), (Messages{Invalid("-")}));
}

TEST_F(UtilHexTest, AllocatesOnce) {
  Bits("A5", 8);
  ASSERT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(shim::Allocations()[0].size, 9u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
}

TEST_F(UtilHexTest, WithoutMemoryIsNull) {
  shim::FailAllocation(1);
  EXPECT_EQ(Bits("A5", 8), "null");
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(UtilHexTest, CountsBelowOneTouchNothing) {
  for (const int32_t count : {0, -1, -4, std::numeric_limits<int32_t>::min()}) {
    uint8_t *bits = Quorlan_HexStrToChars(shim::NewString("A5"), count);
    if (bits != nullptr) {
      EXPECT_EQ(String(bits), "") << count;
    }
    kfree(bits);
  }
}

}  // namespace
