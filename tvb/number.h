// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The file's variable-length numbers: groups of 7 bits, least significant group first, one group a
// byte, bit 7 of a byte saying that another follows. And the cursor that reads them from an image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tvb/bytes.h"

namespace tvb {

// Numbers are 32-bit quantities, but the player extends bit 31 as a sign. Wherever a value is a
// length, a count or a rate, this is therefore the largest that means itself.
constexpr uint32_t kMaxNumber = 0x7FFFFFFF;

// Puts `value` at the end of `out` in its shortest form, one to five bytes.
void AppendNumber(Buffer &out, uint32_t value);

// How many bytes AppendNumber() writes for `value`.
size_t NumberSize(uint32_t value);

// Something that does not fit where it stands.
struct Fault {
  uint64_t offset = 0;  // from the start of the image
  std::string message;  // what was found there and what was expected
};

// A number as it stands in an image.
struct NumberView {
  int64_t value = 0;    // as the player takes it: each group within 32 bits, bit 31 being a sign
  uint64_t offset = 0;  // of its first byte
  uint64_t size = 0;    // in bytes
  bool lossy = false;   // it has bits beyond 32, which do not count as what they say
  bool padded = false;  // it ends in groups of 0 that a shorter form would not have

  // What the player takes where it wants 32 bits.
  uint32_t low() const {
    return static_cast<uint32_t>(value);
  }
};

// A position in an image. A byte at or past the image's end reads as 0, the position still
// advancing; that it was wanted is remembered.
class Cursor {
 public:
  // The image stays the caller's and must outlive the cursor.
  Cursor(Bytes image, uint64_t position) : image_(image), position_(position) {}

  uint8_t Byte() {
    uint8_t byte = AtEnd() ? 0 : image_[static_cast<size_t>(position_)];
    past_end_ = past_end_ || AtEnd();
    ++position_;
    return byte;
  }

  NumberView Number();

  // The next `count` bytes, or as many of them as the image has. Goes over all `count`, as if each
  // were read.
  Bytes Slice(uint64_t count);

  // Leaves the byte just read unread.
  void StepBack() {
    --position_;
  }

  bool AtEnd() const {
    return position_ >= image_.size();
  }
  uint64_t position() const {
    return position_;
  }
  // The bytes from here to the end of the image.
  uint64_t left() const {
    return AtEnd() ? 0 : image_.size() - position_;
  }
  // True once a byte at or past the end was wanted.
  bool past_end() const {
    return past_end_;
  }
  Bytes image() const {
    return image_;
  }

 private:
  Bytes image_;
  uint64_t position_;
  bool past_end_ = false;
};

}  // namespace tvb
