// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <string>

#include "svf/text.h"

namespace svf {
namespace {

// Beyond this exponent every product is 0 or too large.
constexpr int kMaxExponent = 1000;
constexpr uint64_t kMaxDigits = 999'999'999'999'999'999;  // one more digit still fits

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Parses an exponent, including its sign, to the end of `text`.
std::optional<int> ParseExponent(std::string_view text) {
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') {
      return std::nullopt;
    }
  }
  int exponent = 0;
  const char *end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, exponent);
  if (result.ec == std::errc::result_out_of_range && result.ptr == end) {
    return text.front() == '-' ? -kMaxExponent : kMaxExponent;
  }
  if (result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return std::clamp(exponent, -kMaxExponent, kMaxExponent);
}

}  // namespace

std::optional<Decimal> Decimal::Parse(std::string_view text) {
  Decimal number;
  bool point = false;
  bool any = false;
  bool dropped = false;
  size_t at = 0;
  for (; at < text.size() && (IsDigit(text[at]) || (text[at] == '.' && !point)); ++at) {
    if (text[at] == '.') {
      point = true;
      continue;
    }
    any = true;
    const auto digit = static_cast<uint64_t>(text[at] - '0');
    if (number.digits_ <= kMaxDigits) {
      number.digits_ = 10 * number.digits_ + digit;
      number.exponent_ -= point;
    } else {
      number.exponent_ += !point;
      dropped |= digit != 0;
    }
  }
  number.digits_ += dropped;
  if (!any) {
    return std::nullopt;
  }
  if (at < text.size()) {
    const auto exponent =
        text[at] == 'e' || text[at] == 'E' ? ParseExponent(text.substr(at + 1)) : std::nullopt;
    if (!exponent) {
      return std::nullopt;
    }
    number.exponent_ += *exponent;
  }
  return number;
}

uint64_t Decimal::TimesUp(uint64_t factor) const {
  const Product product = Times(factor);
  return product.exact ? product.whole : product.whole + 1;
}

uint64_t Decimal::TimesDown(uint64_t factor) const {
  return Times(factor).whole;
}

std::optional<uint64_t> Decimal::Whole() const {
  const Product product = Times(1);
  return product.exact && product.whole < kTooLarge ? std::optional(product.whole) : std::nullopt;
}

Decimal::Product Decimal::Times(uint64_t factor) const {
  auto product = static_cast<unsigned __int128>(digits_) * factor;
  for (int power = exponent_; power > 0 && product != 0; --power) {
    product *= 10;
    if (product >= kTooLarge) {
      return {kTooLarge, true};
    }
  }
  bool exact = true;
  for (int power = exponent_; power < 0 && product != 0; ++power) {
    exact &= product % 10 == 0;
    product /= 10;
  }
  if (product >= kTooLarge) {
    return {kTooLarge, true};
  }
  return {static_cast<uint64_t>(product), exact};
}

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

// The four bits of each hex digit, reversed; 0 for other characters.
constexpr std::array<uint8_t, 256> MakeTurnedDigits() {
  std::array<uint8_t, 256> turned{};
  constexpr uint8_t kTurned[16] = {0x0, 0x8, 0x4, 0xC, 0x2, 0xA, 0x6, 0xE,
                                   0x1, 0x9, 0x5, 0xD, 0x3, 0xB, 0x7, 0xF};
  for (int digit = 0; digit < 10; ++digit) {
    turned['0' + digit] = kTurned[digit];
  }
  for (int digit = 10; digit < 16; ++digit) {
    turned['A' + digit - 10] = kTurned[digit];
    turned['a' + digit - 10] = kTurned[digit];
  }
  return turned;
}

constexpr std::array<uint8_t, 256> kTurnedDigits = MakeTurnedDigits();

uint8_t Turned(char digit) {
  return kTurnedDigits[static_cast<uint8_t>(digit)];
}

uint64_t LoadEight(const char *text) {
  uint64_t word;
  memcpy(&word, text, sizeof word);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  return word;
}

constexpr uint64_t Each(uint8_t byte) {
  return uint64_t{0x0101010101010101} * byte;
}

// Eight characters of text, the leftmost in the lowest byte.

// True if each of them, which are digits and blanks, is a digit. Digits have bit 4 or bit 6 set,
// blanks neither.
bool AllDigits(uint64_t characters) {
  return ((characters | characters >> 2) & Each(0x10)) == Each(0x10);
}

// True if each of them is a hexadecimal digit.
bool AllHexDigits(uint64_t characters) {
  const uint64_t small = characters | Each(0x20);
  const auto not_below = [](uint64_t bytes, int least) {
    return bytes + Each(static_cast<uint8_t>(0x80 - least));  // in bit 7 of each, if that was 0
  };
  const uint64_t digits = not_below(characters, '0') & ~not_below(characters, '9' + 1);
  const uint64_t letters = not_below(small, 'a') & ~not_below(small, 'f' + 1);
  return ((digits | letters) & ~characters & Each(0x80)) == Each(0x80);
}

// The register bits of eight digits, the lowest first: the rightmost digit is in the lowest bits.
uint32_t BitsOf(uint64_t digits) {
  // Values of 0 to 15; letters have bit 6 set and count from 9.
  uint64_t values = (digits & Each(0x0F)) + 9 * (digits >> 6 & Each(0x01));
  values = __builtin_bswap64(values);  // the rightmost digit's value in the lowest byte
  uint64_t pairs = (values | values >> 4) & 0x00FF00FF00FF00FF;
  pairs = (pairs | pairs >> 8) & 0x0000FFFF0000FFFF;
  return static_cast<uint32_t>(pairs | pairs >> 16);
}

// Stores register bits as bytes.
void StoreBits(uint64_t bits, uint8_t *bytes, size_t count) {
  bits = (bits >> 1 & Each(0x55)) | (bits & Each(0x55)) << 1;
  bits = (bits >> 2 & Each(0x33)) | (bits & Each(0x33)) << 2;
  bits = (bits >> 4 & Each(0x0F)) | (bits & Each(0x0F)) << 4;
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  bits = __builtin_bswap64(bits);
#endif
  memcpy(bytes, &bits, count);
}

// The same text with comments replaced by blanks, so that every digit keeps its offset.
std::string WithoutComments(std::string_view text) {
  std::string plain(text);
  for (size_t at = 0; at < plain.size(); ++at) {
    if (IsComment(text, at)) {
      const size_t end = EndOfComment(text, at);
      plain.replace(at, end - at, end - at, ' ');
      at = end;
    }
  }
  return plain;
}

// The digits of a text that consists of digits and blanks, from the right.
class DigitsFromRight {
 public:
  explicit DigitsFromRight(std::string_view text)
      : begin_(text.data()), at_(text.data() + text.size()) {}

  // The offset of the next digit, or kNone if there is none left.
  size_t Next() {
    while (at_ > begin_) {
      if (IsHexDigit(*--at_)) {
        return static_cast<size_t>(at_ - begin_);
      }
    }
    return kNone;
  }

  bool AtEnd() const {
    return at_ == begin_;
  }

  // Converts runs of eight digits into `bytes` while there are digits and room; returns the number
  // of bytes written.
  size_t ConvertRuns(uint8_t *bytes, size_t room) {
    size_t made = 0;
    for (; room - made >= 8 && NextAreDigits(2); made += 8) {
      const uint64_t low = BitsOf(LoadEight(at_ - 8));
      StoreBits(low | uint64_t{BitsOf(LoadEight(at_ - 16))} << 32, bytes + made, 8);
      at_ -= 16;
    }
    for (; room - made >= 4 && NextAreDigits(1); made += 4) {
      StoreBits(BitsOf(LoadEight(at_ - 8)), bytes + made, 4);
      at_ -= 8;
    }
    return made;
  }

 private:
  // True if the next characters, `eights` times eight, are digits.
  bool NextAreDigits(int eights) const {
    return at_ - begin_ >= 8 * eights && AllDigits(LoadEight(at_ - 8)) &&
           (eights == 1 || AllDigits(LoadEight(at_ - 16)));
  }

  const char *begin_;
  const char *at_;
};

// One byte from the next one or two digits; 0 if none are left.
uint8_t ConvertPair(std::string_view text, DigitsFromRight &digits) {
  const size_t low = digits.Next();
  const size_t high = digits.Next();
  return static_cast<uint8_t>((low != kNone ? Turned(text[low]) << 4 : 0) |
                              (high != kNone ? Turned(text[high]) : 0));
}

bool AnyOtherThanZero(std::string_view text, DigitsFromRight digits) {
  for (size_t at; (at = digits.Next()) != kNone;) {
    if (text[at] != '0') {
      return true;
    }
  }
  return false;
}

// The offset of the first digit from the right with a 1 beyond the register; there must be one.
size_t FindBeyond(std::string_view text, uint32_t bits) {
  DigitsFromRight digits(text);
  for (uint64_t bit = 0;; bit += 4) {
    const size_t at = digits.Next();
    const unsigned allowed = bit >= bits ? 0 : static_cast<unsigned>(bits - bit);
    const unsigned unused = 0xFu >> std::min(allowed, 4u);
    if (at == kNone || (Turned(text[at]) & unused) != 0) {
      return at;
    }
  }
}

}  // namespace

HexText ScanHex(std::string_view text, size_t start) {
  HexText hex;
  hex.offset = start;
  size_t at = start;
  for (; at < text.size(); ++at) {
    while (at + 8 < text.size() && AllHexDigits(LoadEight(&text[at]))) {
      hex.digits += 8;
      at += 8;
    }
    if (IsHexDigit(text[at])) {
      ++hex.digits;
    } else if (text[at] == ')') {
      hex.text = text.substr(start, at - start);
      return hex;
    } else if (IsComment(text, at)) {
      hex.comments = true;
      at = EndOfComment(text, at) - 1;
    } else if (ClassOf(text[at]) != CharacterClass::kBlank) {
      throw Error(at, "expected a hexadecimal digit or ')', found " + Quoted(text, at) +
                          "; is the parenthesis closed?");
    }
  }
  throw Error(start - 1, "this '(' is never closed; expected hexadecimal digits and ')'");
}

void ConvertHex(const HexText &hex, uint32_t bits, const char *what, std::vector<uint8_t> &bytes) {
  if (hex.digits == 0 && bits > 0) {
    throw Error(hex.offset, std::string(what) + " has no digits; expected " + std::to_string(bits) +
                                " bits of hexadecimal data");
  }
  if (hex.comments) {
    const std::string plain = WithoutComments(hex.text);
    return ConvertHex({plain, hex.offset, hex.digits, false}, bits, what, bytes);
  }
  const size_t size = (static_cast<size_t>(bits) + 7) / 8;
  bytes.resize(size);
  DigitsFromRight digits(hex.text);
  for (size_t made = 0; made < size;) {
    made += digits.ConvertRuns(bytes.data() + made, size - made);
    if (digits.AtEnd()) {
      memset(bytes.data() + made, 0, size - made);
      break;
    }
    if (made < size) {
      bytes[made++] = ConvertPair(hex.text, digits);
    }
  }
  const auto unused = static_cast<unsigned>(8 * size - bits);
  if ((unused != 0 && (bytes.back() & ((1u << unused) - 1)) != 0) ||
      AnyOtherThanZero(hex.text, digits)) {
    throw Error(hex.offset + FindBeyond(hex.text, bits),
                std::string(what) + " has a 1 beyond its " + std::to_string(bits) +
                    (bits == 1 ? " bit" : " bits") + "; correct the data or the length");
  }
}

}  // namespace svf
