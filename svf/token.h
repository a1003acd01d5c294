// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The pieces that SVF text is made of.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "svf/hex.h"

namespace svf {

enum class TokenKind {
  kWord,       // letters, digits and '_', beginning with a letter
  kNumber,     // what begins with a digit, a point or a sign
  kData,       // hexadecimal data, its parentheses included
  kSemicolon,  // ';'
  kEnd,        // the end of the text
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  size_t offset = 0;
  std::string_view text;  // as it stands in the file; empty at the end
  HexText hex;            // kData only
};

// True if a token is that word, in capitals or not; `word` is given in capitals.
bool Is(const Token &token, std::string_view word);

// A token as a message names it: 'SDR', "hexadecimal data", or "the end of the file".
std::string Quoted(const Token &token);

}  // namespace svf
