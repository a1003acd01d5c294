// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Raw: the bytes unchanged.
#include "tvb/block.h"
#include "tvb/error.h"

namespace tvb {
namespace {

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  if (parameter) {
    throw Error("raw blocks have no parameter; leave it out");
  }
  Append(out, data);
}

bool EncodeBelow(Buffer &out, Bytes data, size_t limit) {
  if (data.size() >= limit) {
    return false;
  }
  Append(out, data);
  return true;
}

void Decode(Cursor &cursor, Decoded &decoded, BlockView &) {
  decoded.Put(cursor.Slice(decoded.count()));
}

}  // namespace

const Codec codecs::kRaw = {
    .encode = Encode,
    .encode_below = EncodeBelow,
    .decode = Decode,
    .min_size = 1,
};

}  // namespace tvb
