// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads data blocks: how far each goes in the image, and what it decodes to.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/block.h"
#include "tvb/bytes.h"
#include "tvb/cursor.h"

namespace tvb {

// A data block as it stands in an image.
struct BlockView {
  uint64_t offset = 0;          // of its mode byte, or of its data where it has none
  uint64_t size = 0;            // in bytes as stored, mode byte included
  uint64_t count = 0;           // bytes that it has to decode to
  std::optional<uint8_t> mode;  // absent in a file of plain blocks and in headers and trailers
  uint64_t parameter = 0;       // escape byte, symbol, pattern length in nibbles, or LZW's k
  uint64_t written = 0;         // how many of `count`, from the first on, decoding gives
  uint64_t surplus = 0;         // how many more than `count` it would give
  std::optional<Fault> fault;   // why it cannot be decoded as its mode says

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
