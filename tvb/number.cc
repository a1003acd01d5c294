// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/number.h"

#include <algorithm>

namespace tvb {
namespace {

constexpr int kLastGroup = 4;             // of a number of 32 bits
constexpr uint32_t kMaxLastGroup = 0x0F;  // that group has four bits

}  // namespace

uint8_t *PutNumber(uint8_t *out, uint32_t value) {
  while (value > 0x7F) {
    *out++ = static_cast<uint8_t>(0x80 | (value & 0x7F));
    value >>= 7;
  }
  *out++ = static_cast<uint8_t>(value);
  return out;
}

void AppendNumber(Buffer &out, uint32_t value) {
  if (value <= 0x7F) {
    out.push_back(static_cast<uint8_t>(value));
    return;
  }
  uint8_t bytes[kMaxNumberSize];
  Append(out, {bytes, PutNumber(bytes, value)});
}

size_t NumberSize(uint32_t value) {
  size_t size = 1;
  while (value > 0x7F) {
    value >>= 7;
    ++size;
  }
  return size;
}

NumberView Cursor::Number() {
  NumberView number;
  number.offset = position_;
  uint64_t sum = 0;
  uint8_t byte = 0;
  do {
    byte = Byte();
    uint32_t group = byte & 0x7F;
    uint32_t worth = group << (7 * number.size % 32);
    sum += static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(worth)));
    number.lossy = number.lossy || (number.size == kLastGroup && group > kMaxLastGroup) ||
                   (number.size > kLastGroup && group != 0);
    ++number.size;
  } while (byte & 0x80);
  number.value = static_cast<int64_t>(sum);
  number.padded = number.size > 1 && byte == 0 && !past_end_;
  return number;
}

Bytes Cursor::Slice(uint64_t count) {
  const uint64_t start = std::min<uint64_t>(position_, image_.size());
  const Bytes bytes(image_.data() + start, static_cast<size_t>(std::min(count, left())));
  past_end_ = past_end_ || count > left();
  position_ += count;
  return bytes;
}

}  // namespace tvb
