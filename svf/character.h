// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What each character may begin or continue.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace svf {

enum class CharacterClass : uint8_t {
  kDigit,
  kHexLetter,  // A to F
  kLetter,     // the others, and '_'
  kBlank,      // blank, tab, CR, LF, and the rest of C's white space
  kOpen,
  kClose,
  kSemicolon,
  kComment,  // '!'; and '/', of which it takes two
  kOther,
};

namespace internal {

constexpr std::array<CharacterClass, 256> MakeClasses() {
  std::array<CharacterClass, 256> classes{};
  for (CharacterClass &one : classes) {
    one = CharacterClass::kOther;
  }
  for (int c = 'A'; c <= 'Z'; ++c) {
    const auto letter = c <= 'F' ? CharacterClass::kHexLetter : CharacterClass::kLetter;
    classes[c] = letter;
    classes[c + 'a' - 'A'] = letter;
  }
  for (int c = '0'; c <= '9'; ++c) {
    classes[c] = CharacterClass::kDigit;
  }
  for (char c : {' ', '\t', '\n', '\v', '\f', '\r'}) {
    classes[c] = CharacterClass::kBlank;
  }
  classes['_'] = CharacterClass::kLetter;
  classes['('] = CharacterClass::kOpen;
  classes[')'] = CharacterClass::kClose;
  classes[';'] = CharacterClass::kSemicolon;
  classes['!'] = CharacterClass::kComment;
  classes['/'] = CharacterClass::kComment;
  return classes;
}

inline constexpr std::array<CharacterClass, 256> kClasses = MakeClasses();

}  // namespace internal

inline CharacterClass ClassOf(char c) {
  return internal::kClasses[static_cast<uint8_t>(c)];
}

inline bool IsHexDigit(char c) {
  return ClassOf(c) <= CharacterClass::kHexLetter;
}

inline bool IsLetter(char c) {
  return ClassOf(c) == CharacterClass::kHexLetter || ClassOf(c) == CharacterClass::kLetter;
}

// True if a comment begins at offset `at`: '!' or "//".
inline bool IsComment(std::string_view text, size_t at) {
  return ClassOf(text[at]) == CharacterClass::kComment &&
         (text[at] == '!' || (at + 1 < text.size() && text[at + 1] == '/'));
}

// The offset of the line end, CR or LF, that ends the comment at offset `at`; the end of the text
// if there is none.
inline size_t EndOfComment(std::string_view text, size_t at) {
  while (at < text.size() && text[at] != '\n' && text[at] != '\r') {
    ++at;
  }
  return at;
}

// True if a text is that word, in capitals or not; `word` is given in capitals.
bool IsWord(std::string_view text, std::string_view word);

// The character at an offset as a message names it: 'x', byte 0x07, or "the end of the file".
std::string Quoted(std::string_view text, size_t at);

}  // namespace svf
