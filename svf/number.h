// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The two kinds of numbers: decimal fractions, and the hexadecimal data of a scan.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace svf {

// A non-negative number digits * 10^exponent. "1E-3" times 1000000 is exactly 1000, which binary
// floating point does not guarantee.
class Decimal {
 public:
  Decimal() = default;
  explicit Decimal(uint64_t whole) : digits_(whole) {}

  // Parses "12", "0.5", ".5", "1.00E+07", "50021E-6". None if `text` as a whole is not such a
  // number. Digits after the 19th are dropped and the last one kept is raised by one, so that a
  // minimum stays a minimum.
  static std::optional<Decimal> Parse(std::string_view text);

  // The number times `factor`, rounded up or down to a whole number; kTooLarge if the result is
  // 2^63 or more.
  uint64_t TimesUp(uint64_t factor) const;
  uint64_t TimesDown(uint64_t factor) const;
  static constexpr uint64_t kTooLarge = uint64_t{1} << 63;

  // The number itself, if it is whole and below 2^63.
  std::optional<uint64_t> Whole() const;

 private:
  struct Product {
    uint64_t whole;
    bool exact;
  };
  Product Times(uint64_t factor) const;

  uint64_t digits_ = 0;
  int exponent_ = 0;
};

// Hexadecimal data in the text, not converted yet: digits, blanks, line ends and comments only.
struct HexText {
  std::string_view text;  // between the parentheses
  size_t offset = 0;      // of that in the whole text
  size_t digits = 0;
  bool comments = false;
};

// Scans data from offset `start` of `text`, just after the opening parenthesis, to the closing one,
// whose offset is the end of the result. Throws Error at a character that is not a digit, and at
// the opening parenthesis if it is not closed.
HexText ScanHex(std::string_view text, size_t start);

// Converts data into a register of `bits` bits: (bits + 7) / 8 bytes, which replace the contents of
// `bytes`. The rightmost digit's least significant bit is register bit 0, which is shifted first;
// register bit d is bit 7 - (d mod 8) of byte d / 8. So both the order of the digits and the order
// of the bits within them are reversed. Bits beyond the digits, and the unused bits of the last
// byte, are 0. `what` names the data in messages ("TDI"). Throws Error if there are no digits
// although `bits` is above 0, and at a digit with a 1 beyond the register.
void ConvertHex(const HexText &hex, uint32_t bits, const char *what, std::vector<uint8_t> &bytes);

}  // namespace svf
