// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data blocks: register data in one of the encodings, selected by a mode byte. A block does not
// store its length; the reader derives the number of bytes from the record's number of bits.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/encoding.h"
#include "tvb/number.h"

namespace tvb {

// How to encode a block. Whatever is absent is chosen to make the block smallest.
struct BlockChoice {
  std::optional<Encoding> encoding;  // absent: the smallest, raw if none is smaller
  std::optional<int64_t> parameter;  // of that encoding; see its Codec

  static BlockChoice As(Encoding encoding) {
    return {encoding, std::nullopt};
  }
  static BlockChoice With(Encoding encoding, int64_t parameter) {
    return {encoding, parameter};
  }
};

// The block of `data`, including its mode byte. Among equally small blocks the one with the lowest
// mode byte and parameter wins, so equal data always gives equal blocks. Takes time linear in the
// data. Throws Error for a parameter without an encoding, and where Codec::encode does.
Buffer EncodeBlock(Bytes data, const BlockChoice &choice = {});

// The same, appended to `out`; nothing is appended if it throws.
void AppendBlock(Buffer &out, Bytes data, const BlockChoice &choice = {});

// True if no encoding can make a block of `bytes` bytes smaller than raw.
bool RawIsSmallest(size_t bytes);

// A data block in an image.
struct BlockView {
  uint64_t offset = 0;          // of its mode byte, or of its data if it has none
  uint64_t size = 0;            // in bytes as stored, including the mode byte
  uint64_t count = 0;           // bytes that it must decode to
  std::optional<uint8_t> mode;  // absent in a file of plain blocks and in headers and trailers
  uint64_t parameter = 0;       // of its encoding, if that has one
  uint64_t written = 0;         // how many of the first `count` bytes decoding gives
  uint64_t surplus = 0;         // how many bytes beyond `count` it would give
  std::optional<Fault> fault;   // why its mode cannot decode it

  // The codec of its encoding: raw if it has no mode byte, null if its mode is unknown.
  const Codec *codec() const;

  // True if it decodes without a fault to exactly `count` bytes.
  bool Exact() const {
    return !fault && written == count && surplus == 0;
  }
};

// Measures the block at the cursor and moves the cursor to the first byte after it, where the
// player would be: past the mode byte if the mode is unknown; to the end of the image, with a
// fault, if the block does not end before it. `count`: the number of decoded bytes required;
// `plain`: there is no mode byte. Keeps none of the data; takes time linear in the stored size.
BlockView MeasureBlock(Cursor &cursor, uint64_t count, bool plain);

// The decoded data of a block measured in the same image: `block.count` bytes, 0 for those that
// decoding does not give; empty for an unknown mode. See Bytes for the bit order.
Buffer DecodeBlock(Bytes image, const BlockView &block);

}  // namespace tvb
