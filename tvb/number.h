// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The file's variable-length numbers: groups of 7 bits, least significant group first, one group
// per byte; bit 7 of a byte is set if another byte follows. Also the cursor that reads them from an
// image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tvb/bytes.h"

namespace tvb {

// Numbers have 32 bits, but the player treats bit 31 as a sign. So this is the largest length,
// count or rate that the player reads as written.
constexpr uint32_t kMaxNumber = 0x7FFFFFFF;

constexpr size_t kMaxNumberSize = 5;  // in bytes, of a number in its shortest form

// Puts `value` at `out` in its shortest form, one to kMaxNumberSize bytes; returns their end.
uint8_t *PutNumber(uint8_t *out, uint32_t value);

// The same, appended to `out`.
void AppendNumber(Buffer &out, uint32_t value);

// The number of bytes that AppendNumber() writes for `value`.
size_t NumberSize(uint32_t value);

// Something invalid in an image.
struct Fault {
  uint64_t offset = 0;  // from the start of the image
  std::string message;  // what was found and what was expected
};

// A number in an image.
struct NumberView {
  int64_t value = 0;    // as the player reads it: groups in 32 bits, bit 31 the sign
  uint64_t offset = 0;  // of its first byte
  uint64_t size = 0;    // in bytes
  bool lossy = false;   // it has bits beyond 32, which do not keep their value
  bool padded = false;  // it ends in groups of 0 that a shorter form omits

  // The value that the player uses where it needs 32 bits.
  uint32_t low() const {
    return static_cast<uint32_t>(value);
  }
};

// A read position in an image. A byte at or past the end of the image reads as 0 and the position
// still advances; the cursor remembers that it was read.
class Cursor {
 public:
  // The caller owns the image, which must outlive the cursor.
  Cursor(Bytes image, uint64_t position) : image_(image), position_(position) {}

  uint8_t Byte() {
    uint8_t byte = AtEnd() ? 0 : image_[static_cast<size_t>(position_)];
    past_end_ = past_end_ || AtEnd();
    ++position_;
    return byte;
  }

  NumberView Number();

  // The next `count` bytes, or as many as the image has. Advances by `count`, as if each byte were
  // read.
  Bytes Slice(uint64_t count);

  // Puts the byte just read back.
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
  // True once a byte at or past the end was read.
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
