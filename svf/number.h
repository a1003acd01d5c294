// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The two forms of numbers: decimal fractions, and the hexadecimal data of a scan.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

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

// Data as it stands in the text, not converted yet. Digits, blanks, line ends and comments only.
struct HexText {
  std::string_view text;  // between the parentheses
  size_t offset = 0;      // of that in the whole text
  size_t digits = 0;
  bool comments = false;
};

// Reads data from offset `start` of `text`, just behind the opening parenthesis, to the closing
// one, whose offset is the end of the result. Throws Error at a character that is no digit, and at
// the opening parenthesis if nothing closes it.
HexText ScanHex(std::string_view text, size_t start);

// Converts data into a register of `bits` bits: (bits + 7) / 8 bytes in the place of what was in
// `bytes`. The rightmost digit's least significant bit is register bit 0, which is shifted first;
// register bit d is bit 7 - (d mod 8) of byte d / 8. So the order of the digits and of the bits in
// them are both turned round. Bits that the digits do not reach, and the unused ones of the last
// byte, are 0. `what` names the data in messages ("TDI"). Throws Error if there is no digit but are
// bits, and at a digit with a 1 beyond the register.
void ConvertHex(const HexText &hex, uint32_t bits, const char *what, std::vector<uint8_t> &bytes);

}  // namespace svf
