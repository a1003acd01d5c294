// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// SVF text: its errors, positions and characters.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace svf {

// Thrown for text that is not valid SVF. The message says what was expected and what to do; the
// offset, in bytes from the start of the text, says where.
class Error : public std::runtime_error {
 public:
  Error(size_t offset, const std::string &message) : std::runtime_error(message), offset_(offset) {}

  size_t offset() const {
    return offset_;
  }

 private:
  size_t offset_;
};

// A line and a column in it, both from 1; a column counts bytes.
struct Position {
  size_t line = 1;
  size_t column = 1;
};

// Converts offsets to positions. Lines are counted from the previous position asked for, so asking
// in ascending order walks through the text once. A line ends at LF, CR LF or CR.
class LineIndex {
 public:
  // `text` must live as long as the object.
  explicit LineIndex(std::string_view text) : text_(text) {}

  // The position of an offset into the text; the offset is at most the text's size.
  Position At(size_t offset);

 private:
  std::string_view text_;
  size_t line_ = 1;
  size_t line_start_ = 0;
};

enum class CharacterClass : uint8_t {
  kDigit,
  kHexLetter,  // A to F
  kLetter,     // the others, and '_'
  kBlank,      // blank, tab, CR, LF, and the rest of C's white space
  kOpen,
  kClose,
  kSemicolon,
  kComment,  // '!'; and '/', which takes two
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

// True if `text` is `word`, in any case; `word` itself is given in capitals.
inline bool IsWord(std::string_view text, std::string_view word) {
  const auto equal = [](char c, char capital) {
    return c == capital || (c == (capital | 0x20) && capital >= 'A' && capital <= 'Z');
  };
  return text.size() == word.size() && std::equal(text.begin(), text.end(), word.begin(), equal);
}

// The character at an offset as it appears in messages: 'x', byte 0x07, or "the end of the file".
std::string Quoted(std::string_view text, size_t at);

}  // namespace svf
