// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/bit_row.h"

#include <algorithm>
#include <bit>

namespace tool {

BitRow::BitRow(size_t size, bool level) : bytes_((size + 7) / 8, level ? 0xFF : 0), size_(size) {
  if (level && size % 8 != 0) {
    bytes_.back() = static_cast<uint8_t>((1u << size % 8) - 1);
  }
}

BitRow BitRow::FromFile(std::span<const uint8_t> bytes, size_t size) {
  BitRow row;
  row.bytes_.reserve((size + 7) / 8);
  for (size_t bit = 0; bit < size; ++bit) {
    row.Push(bytes[bit / 8] >> (7 - bit % 8) & 1);
  }
  return row;
}

unsigned BitRow::Digit(size_t first, size_t end) const {
  unsigned digit = 0;
  for (size_t bit = first; bit < std::min(first + 4, end); ++bit) {
    digit |= static_cast<unsigned>((*this)[bit]) << (bit - first);
  }
  return digit;
}

size_t BitRow::Ones() const {
  size_t ones = 0;
  for (const uint8_t byte : bytes_) {
    ones += static_cast<size_t>(std::popcount(byte));
  }
  return ones;
}

BitRow operator&(const BitRow &a, const BitRow &b) {
  BitRow both = a;
  for (size_t i = 0; i < both.bytes_.size(); ++i) {
    both.bytes_[i] &= b.bytes_[i];
  }
  return both;
}

BitRow operator^(const BitRow &a, const BitRow &b) {
  BitRow different = a;
  for (size_t i = 0; i < different.bytes_.size(); ++i) {
    different.bytes_[i] ^= b.bytes_[i];
  }
  return different;
}

std::string BitRow::Hex(size_t first, size_t count) const {
  std::string digits((count + 3) / 4, '0');
  for (size_t i = 0; i < digits.size(); ++i) {
    digits[digits.size() - 1 - i] = "0123456789ABCDEF"[Digit(first + 4 * i, first + count)];
  }
  return digits;
}

}  // namespace tool
