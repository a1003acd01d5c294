// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads a TVB image record by record, in the order of the file. Views of records hold places and
// numbers, not the data itself, and need the image again to get at that.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tvb/block.h"
#include "tvb/bytes.h"
#include "tvb/header.h"
#include "tvb/names.h"
#include "tvb/number.h"

namespace tvb {

// A field of a body.
struct FieldView {
  uint8_t tag = 0;
  uint64_t offset = 0;               // of the tag
  std::optional<NumberView> number;  // of a time or a cycle count, as stored: with its offset
  std::optional<BlockView> block;    // of TDI, TDO, MASK and the data of a header or trailer
};

// One record.
struct RecordView {
  uint64_t index = 0;   // its place in the file, from 1
  uint64_t offset = 0;  // of its '^'
  NumberView length;    // L: its size in bits, as it says itself
  uint64_t opcode_offset = 0;
  uint8_t opcode = 0;
  uint64_t end = 0;  // where the player looks for the next record; see ReadRecord()

  // By opcode; absent where there is none.
  std::optional<NumberView> value;  // bits of a register, Hz, passes of a loop
  std::optional<uint8_t> gate;      // of a run-test: it runs if this is 1 and L is 24 or more
  std::vector<FieldView> fields;
  std::optional<uint8_t> closing;  // the byte that ended the body: 23, or what stood in its place

  // Why the player stops inside it, or would go backwards; the fields before that are filled in.
  std::optional<Fault> fault;

  bool IsShift() const {
    return opcode == kSir || opcode == kSdr;
  }
  bool IsPad() const {
    return opcode >= kTdr && opcode <= kHir;
  }
  bool Runs() const {
    return opcode == kRunTest && length.value >= 24 && gate == 1;
  }
  // Bits of the register of a shift or a pad.
  uint32_t bits() const {
    return value ? value->low() : 0;
  }
  // The block that counts of those with this tag, the last; null if there is none.
  const BlockView *Block(Tag tag) const;
  // Where the record ends by its own length.
  int64_t EndByLength() const {
    return static_cast<int64_t>(opcode_offset) + length.value / 8;
  }
};

// A record of more fields than this is taken as malformed, so that a record's view stays small.
constexpr size_t kMaxFields = 4096;

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
