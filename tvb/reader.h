// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads a TVB image record by record, in the order of the file.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/cursor.h"
#include "tvb/record_view.h"

namespace tvb {

// A record of more fields than this is taken as malformed, so that a record's view stays small.
constexpr size_t kMostFields = 4096;

// Reads the header of `image`.
HeaderView ReadHeader(Bytes image);

// Reads the record whose '^' stands at `offset`, which must lie in the image, by its content, as
// the player does: `end` of the result is the first byte that the player has not read, by L only
// for the records that it skips, and by content for all others, exact L or not. A record with a
// fault ends where the fault is. `plain`: as the header says; `index`: the record's number.
RecordView ReadRecord(Bytes image, bool plain, uint64_t offset, uint64_t index);

// The data of one of a shift's or pad's fields, BytesOfBits(bits) bytes; empty if the record has
// none with this tag. Bytes that the block leaves open are 0.
Buffer FieldData(Bytes image, const RecordView &record, Tag tag);

// Walks the records of an image from the first to the last.
class Reader {
 public:
  // The header must be without fault; the image stays the caller's and must outlive the reader.
  Reader(Bytes image, const HeaderView &header)
      : image_(image), plain_(header.plain()), position_(header.size) {}

  // The next record; none at the end of the file, which is the end of the image, a byte that is not
  // '^' where a record should begin, or a record with a fault (which is given once).
  std::optional<RecordView> Next();

  // Where the next record begins, or what stands there instead. At or past the image's end: all of
  // it was read.
  uint64_t position() const {
    return position_;
  }
  uint64_t records() const {
    return records_;
  }

  // Goes on from `position`, which should be a '^'.
  void MoveTo(uint64_t position) {
    position_ = position;
    faulted_ = false;
  }

 private:
  Bytes image_;
  bool plain_;
  uint64_t position_;
  uint64_t records_ = 0;
  bool faulted_ = false;
};

}  // namespace tvb
