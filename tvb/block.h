// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data blocks: register data in one of the encodings, named by a mode byte. A block does not hold
// its length; the reader knows how many bytes to expect from the record's number of bits.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/encoding.h"
#include "tvb/number.h"

namespace tvb {

// What a block is to be encoded with. What is left out is chosen: whatever comes out smallest.
struct BlockChoice {
  std::optional<Encoding> encoding;  // absent: the smallest of all, raw if none is smaller
  std::optional<int64_t> parameter;  // of that encoding; see its Codec

  static BlockChoice Smallest() {
    return {};
  }
  static BlockChoice As(Encoding encoding) {
    return {encoding, std::nullopt};
  }
  static BlockChoice With(Encoding encoding, int64_t parameter) {
    return {encoding, parameter};
  }
};

// The block of `data`, mode byte included. Of several equally small blocks the one with the lowest
// mode byte and parameter is taken, so equal data always gives equal blocks. Takes time linear in
// the data. Throws Error for a parameter without an encoding, and as Codec::encode.
Buffer EncodeBlock(Bytes data, const BlockChoice &choice = {});

// True if no encoding could make a block of so many bytes smaller than raw.
bool RawIsSmallest(size_t bytes);

// A data block as it stands in an image.
struct BlockView {
  uint64_t offset = 0;          // of its mode byte, or of its data where it has none
  uint64_t size = 0;            // in bytes as stored, mode byte included
  uint64_t count = 0;           // bytes that it has to decode to
  std::optional<uint8_t> mode;  // absent in a file of plain blocks and in headers and trailers
  uint64_t parameter = 0;       // of its encoding, if that has one
  uint64_t written = 0;         // how many of `count`, from the first on, decoding gives
  uint64_t surplus = 0;         // how many more than `count` it would give
  std::optional<Fault> fault;   // why it cannot be decoded as its mode says

  // Of its encoding, raw where it names none; null if its mode is unknown.
  const Codec *codec() const;

  // Decodes without fault to exactly what is asked for.
  bool Exact() const {
    return !fault && written == count && surplus == 0;
  }
};

// Measures the block at the cursor, which goes to the first byte after it, as the player's position
// does: past the mode byte where the mode is unknown, to the end of the image (and with a fault)
// where the block does not end before it. `count`: the bytes asked for; `plain`: there is no mode
// byte. Nothing is kept of the data; takes time linear in the stored size.
BlockView MeasureBlock(Cursor &cursor, uint64_t count, bool plain);

// The decoded data of a block that was measured in the same image: `block.count` bytes, 0 for those
// that decoding does not give, none for an unknown mode. Their bit order is told at Bytes.
Buffer DecodeBlock(Bytes image, const BlockView &block);

}  // namespace tvb
