// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Splits SVF text into tokens.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "svf/number.h"

namespace svf {

enum class TokenKind {
  kWord,       // letters, digits and '_', beginning with a letter
  kNumber,     // begins with a digit, a point or a sign
  kData,       // hexadecimal data, including its parentheses
  kSemicolon,  // ';'
  kEnd,        // the end of the text
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  size_t offset = 0;
  std::string_view text;  // as in the file; empty at the end
  HexText hex;            // of kData; of no meaning else
};

// True if the token is `word`, in any case; `word` itself is given in capitals.
bool Is(const Token &token, std::string_view word);

// A token as it appears in messages: 'SDR', "hexadecimal data", or "the end of the file".
std::string Quoted(const Token &token);

// Reads a text once, from its beginning. It copies and keeps nothing of it, so the text, its lines
// and its data may have any length. Blanks, line ends and comments ('!' or "//" to the end of the
// line) may stand between tokens and between the digits of data.
class Lexer {
 public:
  // `text` must live as long as the object and the tokens.
  explicit Lexer(std::string_view text);

  // Reads the next token, which is valid until the call after; kEnd at the end, as often as called.
  // Throws Error at a character that cannot begin a token.
  const Token &Next();

  // The token read last.
  const Token &token() const {
    return token_;
  }

  // Passes over what is no token of SVF, so that a semicolon or the end is next.
  void SkipToSemicolon();

  // How far the text has been read, in bytes.
  size_t offset() const {
    return at_;
  }

 private:
  void SkipBlanks();
  const Token &Take(TokenKind kind, size_t length);
  size_t WordLength() const;
  size_t NumberLength() const;
  const Token &TakeData();
  [[noreturn]] void Fail() const;

  std::string_view text_;
  size_t at_ = 0;
  Token token_;
};

}  // namespace svf
