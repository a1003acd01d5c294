// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/lexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "svf/text.h"

namespace {

using svf::TokenKind;
using testing::ElementsAre;

// Every token as a letter for its kind, and its text.
std::vector<std::string> Tokens(std::string_view text) {
  svf::Lexer lexer(text);
  std::vector<std::string> tokens;
  for (;;) {
    const svf::Token token = lexer.Next();
    if (token.kind == TokenKind::kEnd) {
      return tokens;
    }
    tokens.push_back(std::string(1, "wnd;"[static_cast<int>(token.kind)]) +
                     std::string(token.text));
    EXPECT_EQ(text.substr(token.offset, token.text.size()), token.text);
  }
}

TEST(SvfLexer, NeedsNoBlanks) {
  EXPECT_THAT(Tokens("SDR 8 TDI(0f)TDO( F0 );SIR"),
              ElementsAre("wSDR", "n8", "wTDI", "d(0f)", "wTDO", "d( F0 )", ";;", "wSIR"));
}

TEST(SvfLexer, SkipsCommentsAnywhere) {
  EXPECT_THAT(Tokens("!a\nSIR//b;\r\n8 !c !d //e\n;// f"), ElementsAre("wSIR", "n8", ";;"));
  EXPECT_THAT(Tokens("! nothing else"), ElementsAre());
  EXPECT_THAT(Tokens("//"), ElementsAre());
}

TEST(SvfLexer, TakesAnyLineEndAndNone) {
  EXPECT_THAT(Tokens("SIR\r\n8\t;\v\f\n\n"), ElementsAre("wSIR", "n8", ";;"));
  EXPECT_THAT(Tokens("!a\rSIR//b\r(0!c\r1)"), ElementsAre("wSIR", "d(0!c\r1)"));
  EXPECT_THAT(Tokens("SIR 8"), ElementsAre("wSIR", "n8"));
  EXPECT_THAT(Tokens(""), ElementsAre());
  EXPECT_THAT(Tokens("\xEF\xBB\xBFSIR"), ElementsAre("wSIR"));
}

TEST(SvfLexer, KeepsNumbersTogether) {
  EXPECT_THAT(Tokens("1.00E+07 50021e-6 1,5 -3 .5 12AB 1E6;"),
              ElementsAre("n1.00E+07", "n50021e-6", "n1,5", "n-3", "n.5", "n12AB", "n1E6", ";;"));
}

TEST(SvfLexer, CountsDigits) {
  svf::Lexer lexer("(00 1 !23\n 45)");
  const svf::Token token = lexer.Next();
  EXPECT_EQ(token.hex.digits, 5u);
  EXPECT_TRUE(token.hex.comments);
  EXPECT_EQ(token.hex.offset, 1u);
}

TEST(SvfLexer, GivesTheEndAsOftenAsAsked) {
  svf::Lexer lexer(" ");
  EXPECT_EQ(lexer.Next().kind, TokenKind::kEnd);
  EXPECT_EQ(lexer.Next().kind, TokenKind::kEnd);
  EXPECT_EQ(lexer.offset(), 1u);
}

TEST(SvfPosition, CountsLinesForwardsAndBackwards) {
  const std::string_view text = "ab\r\n\ncd\n";
  svf::LineIndex lines(text);
  const auto at = [&lines](size_t offset) {
    const svf::Position position = lines.At(offset);
    return std::to_string(position.line) + ":" + std::to_string(position.column);
  };
  EXPECT_EQ(at(0), "1:1");
  EXPECT_EQ(at(3), "1:4");
  EXPECT_EQ(at(4), "2:1");
  EXPECT_EQ(at(6), "3:2");
  EXPECT_EQ(at(8), "4:1");
  EXPECT_EQ(at(100), "4:1");
  EXPECT_EQ(at(1), "1:2");
  const svf::Position last = svf::LineIndex("a\rb\r\rc").At(5);
  EXPECT_EQ(last.line, 4u);
  EXPECT_EQ(last.column, 1u);
}

}  // namespace
