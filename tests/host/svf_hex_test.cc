// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/number.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "svf_bench.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Convert(const std::string &data, uint32_t bits) {
  const std::string text = "(" + data + ")";
  Bytes bytes = {0xAA, 0xAA, 0xAA};
  svf::ConvertHex(svf::ScanHex(text, 1), bits, "TDI", bytes);
  return bytes;
}

std::string ConvertError(const std::string &data, uint32_t bits) {
  const std::string text = "(" + data + ")";
  return test::ErrorOf(text, [&] { Convert(data, bits); });
}

TEST(SvfHex, PutsTheLastDigitsLowestBitFirst) {
  EXPECT_EQ(Convert("06", 8), (Bytes{0x60}));
  EXPECT_EQ(Convert("1", 1), (Bytes{0x80}));
  EXPECT_EQ(Convert("8001", 16), (Bytes{0x80, 0x01}));
  EXPECT_EQ(Convert("0A014C35", 32), (Bytes{0xAC, 0x32, 0x80, 0x50}));
  EXPECT_EQ(Convert("abc", 12), (Bytes{0x3D, 0x50}));
}

TEST(SvfHex, ExtendsAShortStringWithZeros) {
  EXPECT_EQ(Convert("1", 32), (Bytes{0x80, 0, 0, 0}));
  EXPECT_EQ(Convert("F", 9), (Bytes{0xF0, 0}));
  EXPECT_EQ(Convert("", 0), (Bytes{}));
}

TEST(SvfHex, TakesExcessDigitsThatAreZero) {
  EXPECT_EQ(Convert("0000000000000000005", 3), (Bytes{0xA0}));
  EXPECT_EQ(Convert("00", 0), (Bytes{}));
}

TEST(SvfHex, RefusesABitBeyondTheRegister) {
  EXPECT_EQ(ConvertError("8", 3),
            "1:2: TDI has a 1 beyond its 3 bits; correct the data or the length");
  EXPECT_EQ(ConvertError("100", 8),
            "1:2: TDI has a 1 beyond its 8 bits; correct the data or the length");
  EXPECT_EQ(ConvertError("12 34", 8),
            "1:3: TDI has a 1 beyond its 8 bits; correct the data or the length");
  EXPECT_EQ(ConvertError("2", 1),
            "1:2: TDI has a 1 beyond its 1 bit; correct the data or the length");
  EXPECT_EQ(ConvertError("1", 0),
            "1:2: TDI has a 1 beyond its 0 bits; correct the data or the length");
}

TEST(SvfHex, RefusesDataWithoutDigits) {
  EXPECT_EQ(ConvertError(" ", 8), "1:2: TDI has no digits; expected 8 bits of hexadecimal data");
}

TEST(SvfHex, ReadsPastBlanksAndComments) {
  EXPECT_EQ(Convert("\r\n 0 A0\t1 4C ! FF\n35 // ABCDEF )\n", 32), Convert("0A014C35", 32));
  EXPECT_EQ(Convert("! 1 / 2 // 3 ! 4\n5", 4), Convert("5", 4));
}

TEST(SvfHex, NamesWhatIsNoDigit) {
  EXPECT_EQ(ConvertError("0\n1x", 8),
            "2:2: expected a hexadecimal digit or ')', found 'x'; is the parenthesis closed?");
  EXPECT_EQ(ConvertError("0/1", 8),
            "1:3: expected a hexadecimal digit or ')', found '/'; is the parenthesis closed?");
  EXPECT_EQ(test::ErrorOf("(00", [] { svf::ScanHex("(00", 1); }),
            "1:1: this '(' is never closed; expected hexadecimal digits and ')'");
  EXPECT_EQ(test::ErrorOf("(00 !)", [] { svf::ScanHex("(00 !)", 1); }),
            "1:1: this '(' is never closed; expected hexadecimal digits and ')'");
}

// Bit by bit, by the definition.
Bytes ConvertSlowly(const std::string &digits, uint32_t bits) {
  Bytes bytes((bits + 7) / 8);
  for (uint32_t bit = 0; bit < bits && bit / 4 < digits.size(); ++bit) {
    const int digit = std::stoi(std::string(1, digits[digits.size() - 1 - bit / 4]), nullptr, 16);
    bytes[bit / 8] |= static_cast<uint8_t>((digit >> bit % 4 & 1) << (7 - bit % 8));
  }
  return bytes;
}

TEST(SvfHex, AgreesWithTheDefinitionForEveryLengthAndLayout) {
  std::mt19937 random(1);
  for (uint32_t bits = 1; bits <= 300; ++bits) {
    for (int layout = 0; layout < 20; ++layout) {
      std::string digits;
      for (uint32_t digit = 0; digit < (bits + 3) / 4; ++digit) {
        digits += "0123456789abcdefABCDEF"[random() % 22];
      }
      if (bits % 4 != 0) {
        digits[0] = static_cast<char>('0' + random() % (1u << bits % 4));
      }
      std::string text = digits;
      for (int blank = 0; blank < layout; ++blank) {
        text.insert(random() % (text.size() + 1), blank < 10 ? " " : "\n");
      }
      if (layout > 0) {
        const char *kBetween[] = {" ", "\n", "\r\n", "\t", "!c\n", "//1)\n"};
        text.insert(random() % (text.size() + 1), kBetween[random() % 6]);
      }
      ASSERT_EQ(Convert(text, bits), ConvertSlowly(digits, bits))
          << bits << " bits of (" << text << ")";
    }
  }
}

}  // namespace
