// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/decimal.h"

#include <algorithm>
#include <charconv>

namespace svf {
namespace {

// Beyond these every product is 0 or too large.
constexpr int kLargestExponent = 1000;
constexpr uint64_t kMostDigits = 999'999'999'999'999'999;  // one more digit still fits

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Reads an exponent, sign and all, to the end of `text`.
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
    return text.front() == '-' ? -kLargestExponent : kLargestExponent;
  }
  if (result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return std::clamp(exponent, -kLargestExponent, kLargestExponent);
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
    if (number.digits_ <= kMostDigits) {
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

}  // namespace svf
