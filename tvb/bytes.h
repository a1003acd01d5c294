// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Runs of bytes: the view that arguments are passed by and the buffer that results are kept in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace tvb {

using Buffer = std::vector<uint8_t>;

// A view of bytes that somebody else owns. It is read during the call it is passed to and kept by
// nobody, so a braced list or a temporary buffer may stand in an argument.
//
// Register data in these bytes has the order of the file and of the player: register bit d, d = 0
// being shifted first, is bit 7 - (d mod 8) of byte d / 8. So the first byte goes out first, each
// byte from its most significant bit down, and the unused bits of a partial last byte are its
// lowest ones.
class Bytes {
 public:
  Bytes() = default;
  Bytes(const uint8_t *data, size_t size) : data_(data), size_(size) {}
  Bytes(const Buffer &buffer) : data_(buffer.data()), size_(buffer.size()) {}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winit-list-lifetime"
#endif
  Bytes(std::initializer_list<uint8_t> list) : data_(list.begin()), size_(list.size()) {}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

  const uint8_t *data() const {
    return data_;
  }
  size_t size() const {
    return size_;
  }
  bool empty() const {
    return size_ == 0;
  }
  const uint8_t *begin() const {
    return data_;
  }
  const uint8_t *end() const {
    return data_ + size_;
  }
  uint8_t operator[](size_t index) const {
    return data_[index];
  }

 private:
  const uint8_t *data_ = nullptr;
  size_t size_ = 0;
};

// Puts all of `bytes`, which must not lie in `out` itself, at the end of `out`.
void Append(Buffer &out, Bytes bytes);

// How many bytes a register of `bits` bits takes.
inline size_t BytesOfBits(uint32_t bits) {
  return (static_cast<size_t>(bits) + 7) / 8;
}

}  // namespace tvb
