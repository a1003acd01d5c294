// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/block.h"

#include <utility>

#include "tvb/error.h"
#include "tvb/text.h"

namespace tvb {
namespace {

const EncodingRow &RowOf(Encoding encoding) {
  const EncodingRow *row = FindEncoding(static_cast<uint8_t>(encoding));
  if (!row) {
    throw Error("there is no encoding " + std::to_string(static_cast<int>(encoding)));
  }
  return *row;
}

Buffer BlockAs(Bytes data, const EncodingRow &row, std::optional<int64_t> parameter) {
  Buffer block = {static_cast<uint8_t>(row.encoding)};
  row.codec->encode(block, data, parameter);
  return block;
}

Buffer SmallestBlock(Bytes data) {
  Buffer best = BlockAs(data, Encodings().front(), std::nullopt);
  for (const EncodingRow &row : Encodings().subspan(1)) {
    if (1 + row.codec->min_size >= best.size()) {
      continue;
    }
    Buffer candidate = BlockAs(data, row, std::nullopt);
    if (candidate.size() < best.size()) {
      best = std::move(candidate);
    }
  }
  return best;
}

std::string UnknownMode(uint8_t mode) {
  return "encoding " + Hex(mode) + " of a data block; expected 0 to " +
         std::to_string(Encodings().size() - 1);
}

BlockView ReadBlock(Cursor &cursor, Decoded &decoded, bool plain) {
  BlockView block;
  block.offset = cursor.position();
  block.count = decoded.count();
  if (!plain) {
    block.mode = cursor.Byte();
  }
  if (block.codec()) {
    block.codec()->decode(cursor, decoded, block);
  } else {
    block.fault = {block.offset, UnknownMode(*block.mode)};
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

Buffer EncodeBlock(Bytes data, const BlockChoice &choice) {
  if (choice.encoding) {
    return BlockAs(data, RowOf(*choice.encoding), choice.parameter);
  }
  if (choice.parameter) {
    throw Error("a parameter goes with an encoding; ask for one or leave the parameter out");
  }
  return SmallestBlock(data);
}

bool RawIsSmallest(size_t bytes) {
  for (const EncodingRow &row : Encodings().subspan(1)) {
    if (row.codec->min_size < bytes) {
      return false;
    }
  }
  return true;
}

const Codec *BlockView::codec() const {
  const EncodingRow *row = FindEncoding(mode.value_or(static_cast<uint8_t>(Encoding::kRaw)));
  return row ? row->codec : nullptr;
}

BlockView MeasureBlock(Cursor &cursor, uint64_t count, bool plain) {
  Decoded decoded(count);
  return ReadBlock(cursor, decoded, plain);
}

Buffer DecodeBlock(Bytes image, const BlockView &block) {
  if (!block.codec()) {
    return {};
  }
  Buffer data;
  data.reserve(static_cast<size_t>(block.written));
  Cursor cursor(image, block.offset);
  Decoded decoded(block.count, &data);
  ReadBlock(cursor, decoded, !block.mode);
  data.resize(static_cast<size_t>(block.count), 0);
  return data;
}

}  // namespace tvb
