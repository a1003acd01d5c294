// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Prefixes, suffixes, and removal of characters.
#include <gtest/gtest.h>

#include <string>

#include "engine_fixture.h"

namespace {

class UtilTextTest : public shim::Test {
 protected:
  static int32_t Ends(const std::string &s, const std::string &suffix, int32_t exact) {
    return Quorlan_EndsWith(shim::NewString(s), shim::NewString(suffix), exact);
  }
  static int32_t Starts(const std::string &s, const std::string &prefix, int32_t exact) {
    return Quorlan_StartsWith(shim::NewString(s), shim::NewString(prefix), exact);
  }
  // `s` after the removal; what lies behind its new end must not have been written to.
  static std::string Removed(const std::string &s, const std::string &set) {
    uint8_t *text = shim::NewString(s);
    Quorlan_RemoveChar(text, shim::NewString(set));
    return String(text);
  }
};

TEST_F(UtilTextTest, EndsWithExamples) {
  EXPECT_EQ(Ends("ABCdef", "DEF", 0), 1);
  EXPECT_EQ(Ends("ABCdef", "DEF", 1), 0);
  EXPECT_EQ(Ends("ABCdef", "def", 1), 1);
}

TEST_F(UtilTextTest, StartsWithExamples) {
  EXPECT_EQ(Starts("ab", "abc", 1), -1);
  EXPECT_EQ(Starts("ABCdef", "abc", 0), 1);
  EXPECT_EQ(Starts("ABCdef", "abc", 1), 0);
  EXPECT_EQ(Starts("ABCdef", "ABC", 1), 1);
}

TEST_F(UtilTextTest, EachEndIsItsOwn) {
  EXPECT_EQ(Ends("abcdef", "abc", 1), 0);
  EXPECT_EQ(Starts("abcdef", "def", 1), 0);
  EXPECT_EQ(Ends("aXbX", "bX", 1), 1);
  EXPECT_EQ(Starts("XaXb", "Xa", 1), 1);
}

TEST_F(UtilTextTest, EqualStringsMatchBothWays) {
  EXPECT_EQ(Ends("file.tvb", "file.tvb", 1), 1);
  EXPECT_EQ(Starts("file.tvb", "FILE.TVB", 0), 1);
}

TEST_F(UtilTextTest, EveryCharacterOfThePatternCounts) {
  EXPECT_EQ(Ends("abcd", "xbcd", 1), 0);
  EXPECT_EQ(Ends("abcd", "bxd", 1), 0);
  EXPECT_EQ(Ends("abcd", "bcx", 1), 0);
  EXPECT_EQ(Starts("abcd", "xbc", 0), 0);
  EXPECT_EQ(Starts("abcd", "axc", 0), 0);
  EXPECT_EQ(Starts("abcd", "abx", 0), 0);
}

TEST_F(UtilTextTest, UnusableArguments) {
  uint8_t *some = shim::NewString("abc");
  for (const int32_t exact : {0, 1}) {
    EXPECT_EQ(Quorlan_EndsWith(nullptr, some, exact), -1);
    EXPECT_EQ(Quorlan_EndsWith(some, nullptr, exact), -1);
    EXPECT_EQ(Quorlan_StartsWith(nullptr, some, exact), -1);
    EXPECT_EQ(Quorlan_StartsWith(some, nullptr, exact), -1);
    EXPECT_EQ(Ends("", "a", exact), -1);
    EXPECT_EQ(Ends("a", "", exact), -1);
    EXPECT_EQ(Ends("", "", exact), -1);
    EXPECT_EQ(Ends("ab", "cab", exact), -1);
    EXPECT_EQ(Starts("", "a", exact), -1);
    EXPECT_EQ(Starts("a", "", exact), -1);
    EXPECT_EQ(Starts("", "", exact), -1);
    EXPECT_EQ(Starts("ab", "abc", exact), -1);
  }
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(UtilTextTest, AnyFlagButZeroIsExact) {
  for (const int32_t exact : {1, 2, -1, 256}) {
    EXPECT_EQ(Ends("ABC", "abc", exact), 0) << exact;
    EXPECT_EQ(Starts("ABC", "abc", exact), 0) << exact;
  }
}

// Whether 'c' and `with` are the same character when case does not count.
TEST_F(UtilTextTest, FoldingFollowsTheKernelsTable) {
  for (int c = 1; c < 256; ++c) {
    const bool upper =
        (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xDE);
    const int with = (c + 0x20) & 0xFF;
    if (with == 0) {
      continue;
    }
    const std::string one(1, static_cast<char>(c)), other(1, static_cast<char>(with));
    // The other character may be a capital itself; then it folds further on.
    const bool other_upper = (with >= 'A' && with <= 'Z') || (with >= 0xC0 && with <= 0xD6) ||
                             (with >= 0xD8 && with <= 0xDE);
    EXPECT_EQ(Starts(one, other, 0), upper && !other_upper ? 1 : 0) << c;
    EXPECT_EQ(Ends(other, one, 0), upper && !other_upper ? 1 : 0) << c;
    EXPECT_EQ(Starts(one, one, 0), 1) << c;
    EXPECT_EQ(Starts(one, other, 1), 0) << c;
  }
}

TEST_F(UtilTextTest, RemovesEveryCharacterOfTheSet) {
  EXPECT_EQ(Removed("a-b_c", "-_"), "abc");
  EXPECT_EQ(Removed("--a--", "-"), "a");
  EXPECT_EQ(Removed("abcabc", "cb"), "aa");
  EXPECT_EQ(Removed("abc", "cba"), "");
}

TEST_F(UtilTextTest, RemovalKeepsCaseAndOrder) {
  EXPECT_EQ(Removed("AbBa", "b"), "ABa");
  EXPECT_EQ(Removed("zyx", "a"), "zyx");
}

TEST_F(UtilTextTest, RemovalOfNothing) {
  EXPECT_EQ(Removed("abc", ""), "abc");
  EXPECT_EQ(Removed("", "abc"), "");
  EXPECT_EQ(Removed("", ""), "");
}

TEST_F(UtilTextTest, RemovalWorksInPlace) {
  uint8_t *text = shim::NewString("a-b");
  uint8_t *set = shim::NewString("-");
  Quorlan_RemoveChar(text, set);
  EXPECT_EQ(text[0], 'a');
  EXPECT_EQ(text[1], 'b');
  EXPECT_EQ(text[2], 0);
  EXPECT_EQ(text[3], 0);
  EXPECT_EQ(String(set), "-");
  EXPECT_TRUE(shim::Allocations().empty());
}

}  // namespace
