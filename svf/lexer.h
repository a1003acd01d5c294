// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Cuts SVF text into tokens.
#pragma once

#include <cstddef>
#include <string_view>

#include "svf/token.h"

namespace svf {

// Goes through a text once, from its beginning; nothing of it is copied and nothing is kept, so a
// text may have any length, and so may its lines and its data. Blanks, line ends and comments ('!'
// or "//" to the end of the line) may stand between tokens and between the digits of data.
class Lexer {
 public:
  // `text` must live as long as the object and the tokens.
  explicit Lexer(std::string_view text);

  // The next token; kEnd at the end, as often as it is asked for. Throws Error at a character that
  // begins nothing.
  Token Next();

  // How far the text has been read, in bytes.
  size_t offset() const {
    return at_;
  }

 private:
  void SkipBlanks();
  Token Take(TokenKind kind, size_t length);
  size_t WordLength() const;
  size_t NumberLength() const;
  Token TakeData();
  [[noreturn]] void Fail() const;

  std::string_view text_;
  size_t at_ = 0;
};

}  // namespace svf
