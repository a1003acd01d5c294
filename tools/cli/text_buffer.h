// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Text under construction, for output that is written in large amounts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tool {

// One or several lines in memory that Clear() keeps for the next.
class TextBuffer {
 public:
  // Appends each part: a character, text, or an integer in decimal.
  template <typename... Parts>
  void Put(const Parts &...parts) {
    (PutPart(parts), ...);
  }

  // Appends the text and blanks after or before it, as many as `width` characters take.
  void PutLeft(std::string_view text, size_t width);
  void PutRight(std::string_view text, size_t width);

  // Appends the hexadecimal digits of a register of `size` bits in SVF notation: the bit shifted
  // first is the lowest bit of the last digit. There are (size + 3) / 4 digits. `bytes` are a
  // command file's: bit d is bit 7 - (d mod 8) of byte d / 8.
  void PutRegister(std::span<const uint8_t> bytes, size_t size);

  // Removes the blanks at the end of the text and ends the line.
  void EndLine();

  void Clear() {
    size_ = 0;
  }

  // Valid until the next change.
  std::string_view text() const {
    return {bytes_.data(), size_};
  }

 private:
  template <typename Part>
  void PutPart(const Part &part) {
    static_assert(!std::is_same_v<Part, bool>);
    if constexpr (std::is_same_v<Part, char>) {
      *Room(1) = part;
    } else if constexpr (std::is_unsigned_v<Part>) {
      PutNumber(part);
    } else if constexpr (std::is_integral_v<Part>) {
      PutSigned(part);
    } else {
      PutText(part);
    }
  }
  void PutText(std::string_view text) {
    std::memcpy(Room(text.size()), text.data(), text.size());
  }
  void PutNumber(uint64_t number);
  void PutSigned(int64_t number);

  // Appends `count` characters, which the caller sets.
  char *Room(size_t count) {
    if (bytes_.size() - size_ < count) {
      Grow(count);
    }
    size_ += count;
    return bytes_.data() + size_ - count;
  }
  void Grow(size_t count);

  std::vector<char> bytes_ = std::vector<char>(1 << 10);
  size_t size_ = 0;
};

}  // namespace tool
