// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/bit_coding.h"

#include <algorithm>
#include <array>

namespace tvb {
namespace {

// Gathers bits, most significant first, into bytes.
class BitPacker {
 public:
  explicit BitPacker(Buffer &out) : out_(out) {}

  // The low `count` bits of `bits`, highest of them first; at most 9 at a time.
  void Put(uint32_t bits, int count) {
    held_ = held_ << count | bits;
    held_count_ += count;
    while (held_count_ >= 8) {
      held_count_ -= 8;
      out_.push_back(static_cast<uint8_t>(held_ >> held_count_));
    }
  }

  void Flush() {
    if (held_count_ > 0) {
      Put(0, 8 - held_count_);
    }
  }

 private:
  Buffer &out_;
  uint32_t held_ = 0;
  int held_count_ = 0;
};

}  // namespace

uint8_t BestSymbol(Bytes data) {
  std::array<size_t, 256> seen{};
  for (uint8_t byte : data) {
    ++seen[byte];
  }
  return static_cast<uint8_t>(std::max_element(seen.begin(), seen.end()) - seen.begin());
}

void AppendBitCoding(Buffer &out, Bytes data, uint8_t symbol) {
  out.push_back(symbol);
  BitPacker packer(out);
  for (uint8_t byte : data) {
    if (byte == symbol) {
      packer.Put(0, 1);
    } else {
      packer.Put(0x100u | byte, 9);
    }
  }
  packer.Flush();
}

}  // namespace tvb
