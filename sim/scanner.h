// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reading names, numbers and signs from a NUL-terminated text, with the place of the first error.
#ifndef SIM_SCANNER_H
#define SIM_SCANNER_H

#include "config.h"

namespace sim {

// A stretch of the text.
struct Word {
  const char *text;
  sim_size length;
  sim_size position;

  bool Is(const char *name) const {
    sim_size i = 0;
    while (i < length && name[i] != '\0' && name[i] == text[i]) {
      ++i;
    }
    return i == length && name[i] == '\0';
  }
};

constexpr unsigned kNoDigit = 99;

inline unsigned DigitValue(char c) {
  if (c >= '0' && c <= '9') {
    return static_cast<unsigned>(c - '0');
  }
  if (c >= 'a' && c <= 'f') {
    return static_cast<unsigned>(c - 'a') + 10;
  }
  return c >= 'A' && c <= 'F' ? static_cast<unsigned>(c - 'A') + 10 : kNoDigit;
}

inline bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

inline bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

class Scanner {
 public:
  Scanner(const char *text, sim_text_error *error) : text_(text), error_(error) {}

  // The offset of the next character that is not a blank.
  sim_size Position() {
    while (IsBlank(text_[at_])) {
      ++at_;
    }
    return at_;
  }

  bool AtEnd() {
    return text_[Position()] == '\0';
  }

  // Takes a sign if it is next.
  bool Accept(char sign) {
    if (text_[Position()] != sign) {
      return false;
    }
    ++at_;
    return true;
  }

  // Takes a sign, or fails with `reason`.
  bool Expect(char sign, const char *reason) {
    return Accept(sign) || Fail(at_, reason);
  }

  // Takes letters, digits and '-'; of length 0 when there are none.
  Word TakeWord() {
    const sim_size start = Position();
    while (IsWordCharacter(text_[at_])) {
      ++at_;
    }
    return Word{text_ + start, at_ - start, start};
  }

  // Takes a decimal or 0x number of at most 32 bits, or fails.
  bool TakeNumber(sim_u32 &value) {
    const sim_size start = Position();
    const bool hexadecimal = text_[start] == '0' &&
                             (text_[start + 1] == 'x' || text_[start + 1] == 'X') &&
                             DigitValue(text_[start + 2]) < 16;
    if (hexadecimal) {
      at_ += 2;
    }
    return TakeDigits(hexadecimal ? 16 : 10, start, value);
  }

  // Notes an error at a position and returns false.
  bool Fail(sim_size position, const char *reason) {
    *error_ = sim_text_error{position, reason};
    return false;
  }

 private:
  bool TakeDigits(unsigned base, sim_size start, sim_u32 &value) {
    if (DigitValue(text_[at_]) >= base) {
      return Fail(at_, "a number is expected");
    }
    sim_u64 sum = 0;
    for (; DigitValue(text_[at_]) < base; ++at_) {
      sum = sum * base + DigitValue(text_[at_]);
      if (sum > 0xffffffffu) {
        return Fail(start, "the number is larger than 32 bits");
      }
    }
    value = static_cast<sim_u32>(sum);
    return true;
  }

  const char *text_;
  sim_text_error *error_;
  sim_size at_ = 0;
};

}  // namespace sim

#endif
