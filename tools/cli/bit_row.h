// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The bits of a register in shift order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tool {

// Bit 0 is shifted first.
class BitRow {
 public:
  BitRow() = default;
  BitRow(size_t size, bool level);

  // Copies `size` bits from a command file's bytes; bit d is bit 7 - (d mod 8) of byte d / 8.
  static BitRow FromFile(std::span<const uint8_t> bytes, size_t size);

  void Push(bool bit) {
    if (size_ % 8 == 0) {
      bytes_.push_back(0);
    }
    bytes_.back() |= static_cast<uint8_t>(bit << size_ % 8);
    ++size_;
  }
  void Clear() {
    bytes_.clear();
    size_ = 0;
  }

  bool operator[](size_t bit) const {
    return bytes_[bit / 8] >> bit % 8 & 1;
  }
  size_t size() const {
    return size_;
  }

  // The hexadecimal digits of bits `first` to `first + count - 1` in SVF notation: the bit shifted
  // first is the lowest bit of the last digit. There are (count + 3) / 4 digits.
  std::string Hex(size_t first, size_t count) const;
  std::string Hex() const {
    return Hex(0, size_);
  }

  // The number of 1 bits.
  size_t Ones() const;

  // Bitwise, on rows of the same size.
  friend BitRow operator&(const BitRow &a, const BitRow &b);
  friend BitRow operator^(const BitRow &a, const BitRow &b);
  friend bool operator==(const BitRow &a, const BitRow &b) {
    return a.size_ == b.size_ && a.bytes_ == b.bytes_;
  }

 private:
  unsigned Digit(size_t first, size_t end) const;

  std::vector<uint8_t> bytes_;  // bit d is bit d mod 8 of byte d / 8; bits past the end are 0
  size_t size_ = 0;
};

}  // namespace tool
