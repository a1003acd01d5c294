// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/number.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using svf::Decimal;

uint64_t Up(const char *text, uint64_t factor) {
  const auto number = Decimal::Parse(text);
  EXPECT_TRUE(number) << text;
  return number ? number->TimesUp(factor) : 0;
}

uint64_t Down(const char *text, uint64_t factor) {
  const auto number = Decimal::Parse(text);
  EXPECT_TRUE(number) << text;
  return number ? number->TimesDown(factor) : 0;
}

TEST(SvfDecimal, ReadsWhatFilesWrite) {
  EXPECT_EQ(Up("50021E-6", 1000000), 50021u);
  EXPECT_EQ(Up("1.00E+07", 1), 10000000u);
  EXPECT_EQ(Up("1E6", 1), 1000000u);
  EXPECT_EQ(Up("0.5", 1000), 500u);
  EXPECT_EQ(Up(".5", 1000), 500u);
  EXPECT_EQ(Up("5.", 1), 5u);
  EXPECT_EQ(Up("007", 1), 7u);
  EXPECT_EQ(Up("1.50E-002", 1000000), 15000u);
  EXPECT_EQ(Up("0", 1000), 0u);
  EXPECT_EQ(Up("0E9999999999", 1000), 0u);
}

TEST(SvfDecimal, IsExact) {
  EXPECT_EQ(Up("1E-3", 1000), 1u);
  EXPECT_EQ(Up("0.1", 10), 1u);
  EXPECT_EQ(Up("0.000000000000000001", 1000000000000000000u), 1u);
  EXPECT_EQ(Up("1.1E-7", 10000000), 2u);
  EXPECT_EQ(Down("1.1E-7", 10000000), 1u);
}

TEST(SvfDecimal, RoundsDroppedDigitsUp) {
  EXPECT_EQ(Up("1.00000000000000000000000000001", 1), 2u);
  EXPECT_EQ(Down("1.00000000000000000000000000000", 1), 1u);
  EXPECT_EQ(Up("1.00000000000000000000000000000", 1), 1u);
  EXPECT_EQ(Down("12345678901234567890123E-20", 1), 123u);
}

TEST(SvfDecimal, KnowsWhatIsTooLarge) {
  EXPECT_EQ(Up("1E19", 1), Decimal::kTooLarge);
  EXPECT_EQ(Down("9223372036854775807", 1), 9223372036854775807u);
  EXPECT_EQ(Up("9223372036854775808", 1), Decimal::kTooLarge);
  EXPECT_EQ(Up("1E99999999999999999999", 1), Decimal::kTooLarge);
  EXPECT_EQ(Up("1E-99999999999999999999", 1), 1u);
  EXPECT_EQ(Down("1E-99999999999999999999", 1), 0u);
  EXPECT_EQ(Up("18446744073709551615", 0xFFFFFFFF), Decimal::kTooLarge);
}

TEST(SvfDecimal, TellsWholeNumbers) {
  EXPECT_EQ(Decimal::Parse("1.5E1")->Whole(), 15u);
  EXPECT_FALSE(Decimal::Parse("1.5")->Whole());
  EXPECT_FALSE(Decimal::Parse("1E30")->Whole());
  EXPECT_EQ(Decimal::Parse("0.00")->Whole(), 0u);
}

TEST(SvfDecimal, ReadsNothingElse) {
  for (const char *text : {"", ".", "E5", "1E", "1E+", "1E-", "1E+-5", "1.2.3", "-1", "+1", "1,5",
                           "1e5x", "0x10", "1E5.5", " 1", "1 "}) {
    EXPECT_FALSE(Decimal::Parse(text)) << text;
  }
}

}  // namespace
