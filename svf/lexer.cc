// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/lexer.h"

#include "svf/text.h"

namespace svf {
namespace {

// Some editors write it before everything else.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsSign(char c) {
  return c == '+' || c == '-';
}

bool IsWordCharacter(char c) {
  return ClassOf(c) <= CharacterClass::kLetter;
}

// Some systems end a text with Ctrl-Z, and some tools fill up a block with NULs.
std::string_view WithoutFill(std::string_view text) {
  constexpr std::string_view kFill("\x1A\0\r\n", 4);
  const size_t last = text.find_last_not_of(kFill);
  return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

}  // namespace

bool Is(const Token &token, std::string_view word) {
  return token.kind == TokenKind::kWord && IsWord(token.text, word);
}

std::string Quoted(const Token &token) {
  constexpr size_t kMaxQuoted = 40;
  switch (token.kind) {
    case TokenKind::kData:
      return "hexadecimal data";
    case TokenKind::kEnd:
      return "the end of the file";
    default:
      break;
  }
  if (token.text.size() > kMaxQuoted) {
    return "'" + std::string(token.text.substr(0, kMaxQuoted)) + "...'";
  }
  return "'" + std::string(token.text) + "'";
}

Lexer::Lexer(std::string_view text) : text_(WithoutFill(text)) {
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    at_ = kByteOrderMark.size();
  }
}

const Token &Lexer::Next() {
  SkipBlanks();
  if (at_ == text_.size()) {
    return Take(TokenKind::kEnd, 0);
  }
  const char c = text_[at_];
  switch (ClassOf(c)) {
    case CharacterClass::kHexLetter:
    case CharacterClass::kLetter:
      return Take(TokenKind::kWord, WordLength());
    case CharacterClass::kDigit:
      return Take(TokenKind::kNumber, NumberLength());
    case CharacterClass::kSemicolon:
      return Take(TokenKind::kSemicolon, 1);
    case CharacterClass::kOpen:
      return TakeData();
    default:
      break;
  }
  if (c == '.' || IsSign(c)) {
    return Take(TokenKind::kNumber, NumberLength());
  }
  Fail();
}

void Lexer::SkipBlanks() {
  const std::string_view text = text_;
  size_t at = at_;
  for (; at < text.size(); ++at) {
    if (ClassOf(text[at]) == CharacterClass::kBlank) {
      continue;
    }
    if (!IsComment(text, at)) {
      break;
    }
    at = EndOfComment(text, at) - 1;
  }
  at_ = at;
}

void Lexer::SkipToSemicolon() {
  SkipBlanks();
  while (at_ < text_.size() && ClassOf(text_[at_]) != CharacterClass::kSemicolon) {
    ++at_;
    SkipBlanks();
  }
}

const Token &Lexer::Take(TokenKind kind, size_t length) {
  token_.kind = kind;
  token_.offset = at_;
  token_.text = {text_.data() + at_, length};
  at_ += length;
  return token_;
}

size_t Lexer::WordLength() const {
  const std::string_view text = text_.substr(at_);
  size_t length = 1;
  while (length < text.size() && IsWordCharacter(text[length])) {
    ++length;
  }
  return length;
}

// A number extends over everything that may have been meant as part of it, so that messages show
// all of it.
size_t Lexer::NumberLength() const {
  size_t end = at_ + 1;
  for (; end < text_.size(); ++end) {
    const char c = text_[end];
    const bool exponent_sign = IsSign(c) && (text_[end - 1] == 'e' || text_[end - 1] == 'E');
    if (!IsWordCharacter(c) && c != '.' && c != ',' && !exponent_sign) {
      break;
    }
  }
  return end - at_;
}

const Token &Lexer::TakeData() {
  token_.hex = ScanHex(text_, at_ + 1);
  return Take(TokenKind::kData, token_.hex.text.size() + 2);
}

void Lexer::Fail() const {
  if (text_[at_] == '/') {
    throw Error(at_, "a comment begins with '//' or '!'; found a single '/'");
  }
  if (text_[at_] == ')') {
    throw Error(at_, "this ')' closes nothing; expected a word, a number, '(' or ';'");
  }
  throw Error(at_, "expected a word, a number, '(' or ';', found " + svf::Quoted(text_, at_) +
                       "; is this an SVF file?");
}

}  // namespace svf
