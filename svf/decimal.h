// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Real numbers as they are written: a decimal fraction, kept exactly.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace svf {

// A number digits * 10^exponent, not negative. "1E-3" times 1000000 is exactly 1000, which no
// binary fraction could promise.
class Decimal {
 public:
  Decimal() = default;
  explicit Decimal(uint64_t whole) : digits_(whole) {}

  // Reads "12", "0.5", ".5", "1.00E+07", "50021E-6". Nothing if the whole of `text` is no such
  // number. Of more than 19 digits the rest is dropped, the last one kept being raised by one, so
  // that a minimum stays a minimum.
  static std::optional<Decimal> Parse(std::string_view text);

  // The number times `factor`, rounded up or down to a whole number; kTooLarge if that is 2^63 or
  // more.
  uint64_t TimesUp(uint64_t factor) const;
  uint64_t TimesDown(uint64_t factor) const;
  static constexpr uint64_t kTooLarge = uint64_t{1} << 63;

  // The number itself, if it is whole and below 2^63.
  std::optional<uint64_t> Whole() const;

  bool IsZero() const {
    return digits_ == 0;
  }

 private:
  struct Product {
    uint64_t whole;
    bool exact;
  };
  Product Times(uint64_t factor) const;

  uint64_t digits_ = 0;
  int exponent_ = 0;
};

}  // namespace svf
