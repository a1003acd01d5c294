// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The encodings of data blocks: the table of all, and what each of them gives to it.
//
// An encoding is one file in encodings/, which defines its Codec, and one row of the table.
// Whatever lists, names, writes, reads or checks encodings goes by the table.
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

// One row an encoding: mode byte, identifier, name. A codec of that identifier must exist, and a
// file of that name ('-' being '_') in encodings/. Rows go by mode bytes, which leave no gap.
#define TVB_ENCODINGS(ROW)         \
  ROW(0, kRaw, "raw")              \
  ROW(1, kRunLength, "run-length") \
  ROW(2, kNibble, "nibble")        \
  ROW(3, kBitCoding, "bit-coding") \
  ROW(4, kLzw, "lzw")              \
  /* end of the table */

// The values are the mode bytes of the file.
#define TVB_ENCODING_VALUE(mode, identifier, name) identifier = mode,
enum class Encoding : uint8_t { TVB_ENCODINGS(TVB_ENCODING_VALUE) };
#undef TVB_ENCODING_VALUE

struct BlockView;

// Counts the bytes that decoding gives and keeps the first `count` of them, if there is a place to
// keep them.
class Decoded {
 public:
  // `out`: gets the bytes at its end; null: they are only counted. It must outlive this object.
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

  // `times` copies of one byte.
  void Put(uint8_t byte, uint64_t times = 1) {
    if (out_) {
      out_->insert(out_->end(), static_cast<size_t>(std::min(times, room())), byte);
    }
    total_ += times;
  }

  // All of `bytes`, or as much of them as is kept.
  void Put(Bytes bytes) {
    if (out_) {
      size_t kept = static_cast<size_t>(std::min<uint64_t>(bytes.size(), room()));
      out_->insert(out_->end(), bytes.begin(), bytes.begin() + kept);
    }
    total_ += bytes.size();
  }

  // `size` bytes of which nobody wants to know the values.
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

// Both directions of an encoding. A payload is what stands in a block behind the mode byte.
struct Codec {
  // Puts the payload of `data` at the end of `out`: with the parameter that is given, else with the
  // one that makes the payload smallest, the lowest of several. Takes time linear in the data.
  // Throws Error, nothing being written, for a parameter with which `data` cannot be encoded.
  void (*encode)(Buffer &out, Bytes data, std::optional<int64_t> parameter);

  // Reads a payload that should give `decoded.count()` bytes; the cursor goes to where the player
  // would be behind it. Stops where the image ends, which the caller sees by the cursor. Sets the
  // block's parameter and, where the payload makes no sense, its fault.
  void (*decode)(Cursor &cursor, Decoded &decoded, BlockView &block);

  // The fewest bytes of a payload that is not of empty data.
  size_t min_size;

  // What `parameter` above is called, in one word, and how it is told ("escape 0xFF"); null for an
  // encoding without one.
  const char *parameter_name = nullptr;
  std::string (*parameter_text)(uint64_t parameter) = nullptr;

  // What is said of a block that decodes to less than it should; null: how much it gives.
  std::string (*shortage_text)(const BlockView &block) = nullptr;
};

// Each defined in the encoding's own file, by its full name: const Codec codecs::kRaw = {...};
namespace codecs {
#define TVB_ENCODING_CODEC(mode, identifier, name) extern const Codec identifier;
TVB_ENCODINGS(TVB_ENCODING_CODEC)
#undef TVB_ENCODING_CODEC
}  // namespace codecs

// A row of the table.
struct EncodingRow {
  Encoding encoding;
  const char *name;  // on the command line and in what is shown
  const Codec *codec;
};

// All rows, in the order of their mode bytes.
std::span<const EncodingRow> Encodings();

// The row of a mode byte; null for none of the table's.
const EncodingRow *FindEncoding(uint8_t mode);

// "raw", "run-length", ...; "unknown" for none of the table's.
const char *EncodingName(uint8_t mode);

// A parameter that is a byte of the file. Throws Error for other numbers.
uint8_t ByteParameter(int64_t parameter);

}  // namespace tvb
