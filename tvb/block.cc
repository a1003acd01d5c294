// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/block.h"

#include <algorithm>
#include <array>
#include <limits>

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

void AppendAs(Buffer &out, Bytes data, const EncodingRow &row, std::optional<int64_t> parameter) {
  Buffer payload;
  row.codec->encode(payload, data, parameter);
  out.push_back(static_cast<uint8_t>(row.encoding));
  Append(out, payload);
}

// True for a few bytes, an even number, that are all different. Then they are smallest raw: no byte
// is frequent, no run or string comes again, and a pattern that fills them with more than a single
// copy has a byte twice.
bool AllDiffer(Bytes data) {
  constexpr size_t kFew = 32;
  if (data.size() > kFew || data.size() % 2 != 0) {
    return false;
  }
  std::array<uint64_t, 4> seen{};
  for (uint8_t byte : data) {
    const uint64_t bit = uint64_t{1} << byte % 64;
    if ((seen[byte / 64] & bit) != 0) {
      return false;
    }
    seen[byte / 64] |= bit;
  }
  return true;
}

void AppendRaw(Buffer &out, Bytes data) {
  out.push_back(static_cast<uint8_t>(Encoding::kRaw));
  Append(out, data);
}

// Tries the encodings in the order of mode bytes; a later one is taken only if it is smaller.
void AppendSmallest(Buffer &out, Bytes data) {
  const auto start = static_cast<ptrdiff_t>(out.size());
  size_t limit = std::numeric_limits<size_t>::max();
  for (const EncodingRow &row : Encodings()) {
    if (row.codec->min_size >= limit) {
      continue;
    }
    const size_t before = out.size();
    out.push_back(static_cast<uint8_t>(row.encoding));
    if (row.codec->encode_below(out, data, limit)) {
      limit = out.size() - before - 1;
      out.erase(out.begin() + start, out.begin() + static_cast<ptrdiff_t>(before));
    } else {
      out.resize(before);
    }
  }
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
  Buffer block;
  AppendBlock(block, data, choice);
  return block;
}

void AppendBlock(Buffer &out, Bytes data, const BlockChoice &choice) {
  if (choice.encoding) {
    AppendAs(out, data, RowOf(*choice.encoding), choice.parameter);
  } else if (choice.parameter) {
    throw Error("a parameter goes with an encoding; ask for one or leave the parameter out");
  } else if (AllDiffer(data)) {
    AppendRaw(out, data);
  } else {
    AppendSmallest(out, data);
  }
}

bool RawIsSmallest(size_t bytes) {
  static const size_t smallest =
      std::ranges::min(Encodings().subspan(1), {}, [](const EncodingRow &row) {
        return row.codec->min_size;
      }).codec->min_size;
  return bytes <= smallest;
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
