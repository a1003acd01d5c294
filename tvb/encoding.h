// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The encodings of data blocks: the table of all encodings, and what each one supplies.
//
// An encoding is one file in encodings/, which defines its Codec, and one row of the table. All
// code that lists, names, writes, reads or checks encodings uses the table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tvb/bytes.h"
#include "tvb/number.h"

namespace tvb {

// One row per encoding: mode byte, identifier, name. Each needs a codec with that identifier and a
// file in encodings/ with that name ('-' replaced by '_'). Rows are in the order of mode bytes,
// without gaps.
#define TVB_ENCODINGS(ROW)         \
  ROW(0, kRaw, "raw")              \
  ROW(1, kRunLength, "run-length") \
  ROW(2, kNibble, "nibble")        \
  ROW(3, kBitCoding, "bit-coding") \
  ROW(4, kLzw, "lzw")              \
  /* end of the table */

// The values are the mode bytes in the file.
#define TVB_ENCODING_VALUE(mode, identifier, name) identifier = mode,
enum class Encoding : uint8_t { TVB_ENCODINGS(TVB_ENCODING_VALUE) };
#undef TVB_ENCODING_VALUE

struct BlockView;

// Counts decoded bytes and, given a buffer, keeps the first `count` of them.
class Decoded {
 public:
  // `out`: the bytes are appended to it; null: they are only counted. It must outlive this object.
  explicit Decoded(uint64_t count, Buffer *out = nullptr) : count_(count), out_(out) {}

  bool keeps() const {
    return out_ != nullptr;
  }
  bool full() const {
    return total_ >= count_;
  }
  uint64_t room() const {
    return full() ? 0 : count_ - total_;
  }

  // Adds `times` copies of `byte`; keeps those that fit.
  void Put(uint8_t byte, uint64_t times = 1) {
    if (out_) {
      out_->insert(out_->end(), static_cast<size_t>(std::min(times, room())), byte);
    }
    total_ += times;
  }

  // Adds `bytes`; keeps those that fit.
  void Put(Bytes bytes) {
    if (out_) {
      size_t kept = static_cast<size_t>(std::min<uint64_t>(bytes.size(), room()));
      out_->insert(out_->end(), bytes.begin(), bytes.begin() + kept);
    }
    total_ += bytes.size();
  }

  // Counts `size` bytes without their values.
  void Skip(uint64_t size) {
    total_ += size;
  }

  uint64_t count() const {
    return count_;
  }
  uint64_t written() const {
    return std::min(total_, count_);
  }
  uint64_t surplus() const {
    return total_ - written();
  }

 private:
  uint64_t count_;
  uint64_t total_ = 0;
  Buffer *out_;
};

// Both directions of an encoding. The payload of a block is everything after its mode byte.
struct Codec {
  // Appends the payload of `data` to `out`, with the given parameter or, without one, with the
  // parameter that makes the payload smallest, the lowest of equals. Takes time linear in the data.
  // Throws Error, with nothing written, for a parameter that cannot encode `data`.
  void (*encode)(Buffer &out, Bytes data, std::optional<int64_t> parameter);

  // Appends the payload that encode() makes without a parameter if it is smaller than `limit`
  // bytes; else returns false with nothing written, and at little cost where a glance at the data
  // shows it.
  bool (*encode_below)(Buffer &out, Bytes data, size_t limit);

  // Reads a payload that should give `decoded.count()` bytes and leaves the cursor where the player
  // would be after it. Stops at the end of the image, which the caller detects by the cursor. Sets
  // the block's parameter and, if the payload makes no sense, its fault.
  void (*decode)(Cursor &cursor, Decoded &decoded, BlockView &block);

  // The smallest size in bytes of a payload of data that is not empty.
  size_t min_size;

  // The parameter's name, in one word, and its value as text ("escape 0xFF"); null for an encoding
  // without a parameter.
  const char *parameter_name = nullptr;
  std::string (*parameter_text)(uint64_t parameter) = nullptr;

  // The message for a block that decodes to fewer bytes than it should; null: the number of bytes
  // it gives.
  std::string (*shortage_text)(const BlockView &block) = nullptr;
};

// Each is defined in the encoding's own file, by its full name: const Codec codecs::kRaw = {...};
namespace codecs {
#define TVB_ENCODING_CODEC(mode, identifier, name) extern const Codec identifier;
TVB_ENCODINGS(TVB_ENCODING_CODEC)
#undef TVB_ENCODING_CODEC
}  // namespace codecs

// A row of the table.
struct EncodingRow {
  Encoding encoding;
  const char *name;  // on the command line and in output
  const Codec *codec;
};

// All rows, in the order of their mode bytes.
std::span<const EncodingRow> Encodings();

// The row of a mode byte; null if the table has none.
const EncodingRow *FindEncoding(uint8_t mode);

// "raw", "run-length", ...; "unknown" if the table has no such row.
const char *EncodingName(uint8_t mode);

// Converts a parameter that is stored as one byte. Throws Error if it does not fit.
uint8_t ByteParameter(int64_t parameter);

}  // namespace tvb
