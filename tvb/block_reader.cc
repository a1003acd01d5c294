// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/block_reader.h"

#include <string>

#include "tvb/decoded.h"
#include "tvb/lzw_reader.h"
#include "tvb/text.h"

namespace tvb {
namespace {

// Every decoder below stops where the image ends; its caller sees that by the cursor.

Bytes TakeBytes(Cursor &cursor, uint64_t count) {
  uint64_t taken = count < cursor.left() ? count : cursor.left();
  Bytes bytes(cursor.image().data() + cursor.position(), static_cast<size_t>(taken));
  cursor.Skip(count);
  return bytes;
}

void ReadRaw(Cursor &cursor, Decoded &decoded) {
  decoded.Put(TakeBytes(cursor, decoded.count()));
}

void ReadRunLength(Cursor &cursor, Decoded &decoded, BlockView &block) {
  uint8_t escape = cursor.Byte();
  block.parameter = escape;
  while (!decoded.full() && !cursor.past_end()) {
    uint8_t byte = cursor.Byte();
    if (cursor.past_end()) {
      return;
    }
    decoded.Put(byte);
    if (byte != escape) {
      continue;
    }
    NumberView more = cursor.Number();
    if (more.value > 0) {
      decoded.Put(escape, static_cast<uint64_t>(more.value));
    }
    if ((more.value < 0 || more.lossy) && !block.fault) {
      block.fault = {more.offset, "a run of " + NumberText(more) +
                                      " more bytes; a run's number is 0 to 2147483647"};
    }
  }
}

uint8_t NibbleOf(Bytes pattern, uint64_t index) {
  uint8_t byte = pattern[static_cast<size_t>(index / 2)];
  return index % 2 == 0 ? byte >> 4 : byte & 0x0F;
}

void RepeatNibbles(Bytes pattern, uint64_t nibbles, uint64_t bytes, Decoded &decoded) {
  if (!decoded.keeps()) {
    decoded.Skip(bytes);
    return;
  }
  uint64_t high = 0;
  for (uint64_t at = 0; at < bytes; ++at) {
    uint64_t low = high + 1 == nibbles ? 0 : high + 1;
    decoded.Put(static_cast<uint8_t>(NibbleOf(pattern, high) << 4 | NibbleOf(pattern, low)));
    high = low + 1 == nibbles ? 0 : low + 1;
  }
}

void ReadNibble(Cursor &cursor, Decoded &decoded, BlockView &block) {
  NumberView number = cursor.Number();
  block.parameter = static_cast<uint64_t>(number.value);
  if (number.value < 0 || number.lossy) {
    block.fault = {number.offset, "a pattern of " + NumberText(number) +
                                      " nibbles; a pattern's length is 1 to 2147483647"};
  }
  if (number.value < 1) {
    return;
  }
  uint64_t nibbles = block.parameter;
  Bytes pattern = TakeBytes(cursor, nibbles / 2 + nibbles % 2);
  if (cursor.past_end()) {
    return;
  }
  // The player copies a pattern of odd length two at a time: only whole bytes.
  uint64_t copies = 2 * decoded.count() / nibbles;
  copies -= nibbles % 2 == 1 ? copies % 2 : 0;
  RepeatNibbles(pattern, nibbles, copies * nibbles / 2, decoded);
}

// Takes bits from the image, each byte from its highest bit down.
class SymbolBits {
 public:
  explicit SymbolBits(Cursor &cursor) : cursor_(cursor) {}

  uint8_t Bit() {
    if (left_ == 0) {
      byte_ = cursor_.Byte();
      left_ = 8;
    }
    --left_;
    return byte_ >> left_ & 1;
  }

  uint8_t Literal() {
    uint8_t literal = 0;
    for (int i = 0; i < 8; ++i) {
      literal = static_cast<uint8_t>(literal << 1 | Bit());
    }
    return literal;
  }

 private:
  Cursor &cursor_;
  uint8_t byte_ = 0;
  int left_ = 0;
};

void ReadBitCoding(Cursor &cursor, Decoded &decoded, BlockView &block) {
  uint8_t symbol = cursor.Byte();
  block.parameter = symbol;
  SymbolBits bits(cursor);
  while (!decoded.full()) {
    uint8_t byte = bits.Bit() ? bits.Literal() : symbol;
    if (cursor.past_end()) {
      return;
    }
    decoded.Put(byte);
  }
}

void ReadLzwBlock(Cursor &cursor, Decoded &decoded, BlockView &block) {
  uint64_t offset = cursor.position();
  LzwResult result = ReadLzw(cursor, decoded);
  block.parameter = result.dictionary;
  if (result.outcome == LzwResult::kDictionary) {
    block.fault = {offset, "LZW dictionary size " + Hex(result.dictionary) + "; expected 0 to 3"};
  }
}

void ReadEncoded(Cursor &cursor, Decoded &decoded, BlockView &block) {
  switch (static_cast<Encoding>(*block.mode)) {
    case Encoding::kRaw:
      return ReadRaw(cursor, decoded);
    case Encoding::kRunLength:
      return ReadRunLength(cursor, decoded, block);
    case Encoding::kNibble:
      return ReadNibble(cursor, decoded, block);
    case Encoding::kBitCoding:
      return ReadBitCoding(cursor, decoded, block);
    case Encoding::kLzw:
      return ReadLzwBlock(cursor, decoded, block);
  }
  block.fault = {block.offset,
                 "encoding " + Hex(*block.mode) + " of a data block; expected 0 to 4"};
}

BlockView ReadBlock(Cursor &cursor, Decoded &decoded, bool plain) {
  BlockView block;
  block.offset = cursor.position();
  block.count = decoded.count();
  if (plain) {
    ReadRaw(cursor, decoded);
  } else {
    block.mode = cursor.Byte();
    ReadEncoded(cursor, decoded, block);
  }
  block.size = cursor.position() - block.offset;
  block.written = decoded.written();
  block.surplus = decoded.surplus();
  if (cursor.past_end()) {
    block.fault = {block.offset, "the image ends inside a data block"};
  }
  return block;
}

}  // namespace

BlockView MeasureBlock(Cursor &cursor, uint64_t count, bool plain) {
  Decoded decoded(count);
  return ReadBlock(cursor, decoded, plain);
}

Buffer DecodeBlock(Bytes image, const BlockView &block) {
  Buffer data;
  data.reserve(static_cast<size_t>(block.written));
  Cursor cursor(image, block.offset);
  Decoded decoded(block.count, &data);
  BlockView again = ReadBlock(cursor, decoded, !block.mode);
  if (again.mode && *again.mode > static_cast<uint8_t>(Encoding::kLzw)) {
    return {};
  }
  data.resize(static_cast<size_t>(block.count), 0);
  return data;
}

}  // namespace tvb
