// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/token.h"

#include "svf/character.h"

namespace svf {

bool Is(const Token &token, std::string_view word) {
  return token.kind == TokenKind::kWord && IsWord(token.text, word);
}

std::string Quoted(const Token &token) {
  constexpr size_t kLongest = 40;
  switch (token.kind) {
    case TokenKind::kData:
      return "hexadecimal data";
    case TokenKind::kEnd:
      return "the end of the file";
    default:
      break;
  }
  if (token.text.size() > kLongest) {
    return "'" + std::string(token.text.substr(0, kLongest)) + "...'";
  }
  return "'" + std::string(token.text) + "'";
}

}  // namespace svf
