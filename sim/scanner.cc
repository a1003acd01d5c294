// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "scanner.h"

namespace {

constexpr unsigned kNoDigit = 99;

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

unsigned DigitValue(char c) {
  if (c >= '0' && c <= '9') {
    return static_cast<unsigned>(c - '0');
  }
  if (c >= 'a' && c <= 'f') {
    return static_cast<unsigned>(c - 'a') + 10;
  }
  return c >= 'A' && c <= 'F' ? static_cast<unsigned>(c - 'A') + 10 : kNoDigit;
}

bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

}  // namespace

namespace sim {

bool Word::Is(const char *name) const {
  sim_size i = 0;
  while (i < length && name[i] != '\0' && name[i] == text[i]) {
    ++i;
  }
  return i == length && name[i] == '\0';
}

sim_size Scanner::Position() {
  while (IsBlank(text_[at_])) {
    ++at_;
  }
  return at_;
}

bool Scanner::AtEnd() {
  return text_[Position()] == '\0';
}

bool Scanner::Accept(char sign) {
  if (text_[Position()] != sign) {
    return false;
  }
  ++at_;
  return true;
}

bool Scanner::Expect(char sign, const char *reason) {
  return Accept(sign) || Fail(at_, reason);
}

Word Scanner::TakeWord() {
  const sim_size start = Position();
  while (IsWordCharacter(text_[at_])) {
    ++at_;
  }
  return Word{text_ + start, at_ - start, start};
}

bool Scanner::TakeNumber(sim_u32 &value) {
  const sim_size start = Position();
  const bool hexadecimal = text_[start] == '0' &&
                           (text_[start + 1] == 'x' || text_[start + 1] == 'X') &&
                           DigitValue(text_[start + 2]) < 16;
  if (hexadecimal) {
    at_ += 2;
  }
  return TakeDigits(hexadecimal ? 16 : 10, start, value);
}

bool Scanner::Fail(sim_size position, const char *reason) {
  *error_ = sim_text_error{position, reason};
  return false;
}

bool Scanner::TakeDigits(unsigned base, sim_size start, sim_u32 &value) {
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

}  // namespace sim
