// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data blocks: register data in one of five encodings, named by a mode byte. A block does not hold
// its length; the reader knows how many bytes to expect from the record's number of bits.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"

namespace tvb {

// The encodings; the values are the mode bytes of the file.
enum class Encoding : uint8_t {
  kRaw = 0,
  kRunLength = 1,
  kNibble = 2,
  kBitCoding = 3,
  kLzw = 4,
};

// What a block is to be encoded with. What is left out is chosen: whatever comes out smallest.
struct BlockChoice {
  std::optional<Encoding> encoding;  // absent: the smallest of all, raw if none is smaller
  std::optional<int> dictionary;     // LZW only: k, the dictionary holding 512 << k codes

  static BlockChoice Smallest() {
    return {};
  }
  static BlockChoice As(Encoding encoding) {
    return {encoding, std::nullopt};
  }
  static BlockChoice Lzw(int k) {
    return {Encoding::kLzw, k};
  }
};

// The block of `data`, mode byte included. Escape byte, symbol, pattern and, where it is not given,
// the dictionary size are those that make it smallest; of several equally small blocks the one
// with the lowest mode byte and dictionary size is taken, so equal data always gives equal blocks.
// Takes time linear in the data. Throws Error for a dictionary size that is not 0 to 3 or is given
// without asking for LZW.
Buffer EncodeBlock(Bytes data, const BlockChoice &choice = {});

}  // namespace tvb
