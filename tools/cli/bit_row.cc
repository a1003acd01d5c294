// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/bit_row.h"

#include <algorithm>
#include <array>
#include <bit>

namespace tool {
namespace {

// Each byte with its bits in the opposite order.
constexpr auto kReversed = [] {
  std::array<uint8_t, 256> reversed{};
  for (unsigned bit = 0; bit < 8; ++bit) {
    for (size_t byte = 0; byte < reversed.size(); ++byte) {
      reversed[byte] |= static_cast<uint8_t>((byte >> bit & 1) << (7 - bit));
    }
  }
  return reversed;
}();

constexpr uint8_t LowBits(size_t count) {
  return static_cast<uint8_t>((1u << count) - 1);
}

}  // namespace

BitRow::BitRow(size_t size, bool level) : bytes_((size + 7) / 8, level ? 0xFF : 0), size_(size) {
  if (level && size % 8 != 0) {
    bytes_.back() = LowBits(size % 8);
  }
}

BitRow BitRow::FromFile(std::span<const uint8_t> bytes, size_t size) {
  BitRow row;
  row.size_ = size;
  row.bytes_.resize((size + 7) / 8);
  std::transform(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(row.bytes_.size()),
                 row.bytes_.begin(), [](uint8_t byte) { return kReversed[byte]; });
  if (size % 8 != 0) {
    row.bytes_.back() &= LowBits(size % 8);
  }
  return row;
}

unsigned BitRow::Digit(size_t first, size_t end) const {
  unsigned bits = bytes_[first / 8];
  if (first / 8 + 1 < bytes_.size()) {
    bits |= static_cast<unsigned>(bytes_[first / 8 + 1]) << 8;
  }
  return bits >> first % 8 & LowBits(std::min<size_t>(end - first, 4));
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
