// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One-symbol bit coding: one bit for the block's most frequent byte, nine bits for any other. The
// payload is the symbol, which is the parameter, then bits that fill each byte from its most
// significant bit down: 0 for the symbol; 1 and eight bits, most significant first, for another
// byte. Unused bits of the last byte are 0.
#include <array>

#include "tvb/block.h"
#include "tvb/text.h"

namespace tvb {
namespace {

// Packs bits into bytes, most significant first.
class BitPacker {
 public:
  explicit BitPacker(Buffer &out) : out_(out) {}

  // Appends the low `count` bits of `bits`, most significant first; at most 9 at a time.
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

// Reads bits from the image, each byte from its most significant bit down.
class BitReader {
 public:
  explicit BitReader(Cursor &cursor) : cursor_(cursor) {}

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

// A symbol and how often the data has it.
struct Symbol {
  uint8_t byte = 0;
  uint32_t times = 0;
};

// The most frequent byte; the lowest of equals. `Count`: a type that can hold the size of the data.
template <typename Count>
Symbol BestSymbol(Bytes data) {
  std::array<Count, 256> seen;
  seen.fill(0);
  Symbol best;
  for (uint8_t byte : data) {
    const uint32_t times = ++seen[byte];
    if (times > best.times || (times == best.times && byte < best.byte)) {
      best = {byte, times};
    }
  }
  return best;
}

// Few bytes are counted in fewer bytes, which take time to clear.
Symbol BestSymbol(Bytes data) {
  return data.size() <= 0xFF ? BestSymbol<uint8_t>(data) : BestSymbol<uint32_t>(data);
}

void EncodeWith(Buffer &out, Bytes data, uint8_t symbol) {
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

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  EncodeWith(out, data, parameter ? ByteParameter(*parameter) : BestSymbol(data).byte);
}

bool EncodeBelow(Buffer &out, Bytes data, size_t limit) {
  const Symbol symbol = BestSymbol(data);
  const size_t bits = 9 * data.size() - 8 * size_t{symbol.times};
  if (1 + (bits + 7) / 8 >= limit) {
    return false;
  }
  EncodeWith(out, data, symbol.byte);
  return true;
}

void Decode(Cursor &cursor, Decoded &decoded, BlockView &block) {
  uint8_t symbol = cursor.Byte();
  block.parameter = symbol;
  BitReader bits(cursor);
  while (!decoded.full()) {
    uint8_t byte = bits.Bit() ? bits.Literal() : symbol;
    if (cursor.past_end()) {
      return;
    }
    decoded.Put(byte);
  }
}

std::string SymbolText(uint64_t symbol) {
  return "symbol " + Hex(symbol);
}

}  // namespace

const Codec codecs::kBitCoding = {
    .encode = Encode,
    .encode_below = EncodeBelow,
    .decode = Decode,
    .min_size = 2,
    .parameter_name = "symbol",
    .parameter_text = SymbolText,
};

}  // namespace tvb
