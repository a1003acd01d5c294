// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads a TVB image record by record, in file order. Record views hold offsets and numbers, not the
// data itself; reading the data needs the image again.
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
  std::optional<NumberView> number;  // of a time or a cycle count, as stored, including its offset
  std::optional<BlockView> block;    // of TDI, TDO, MASK and header or trailer data
};

// One record.
struct RecordView {
  uint64_t index = 0;   // its number in the file, from 1
  uint64_t offset = 0;  // of its '^'
  NumberView length;    // L: its size in bits, as stated
  uint64_t opcode_offset = 0;
  uint8_t opcode = 0;
  uint64_t end = 0;  // where the player looks for the next record; see ReadRecord()

  // Depends on the opcode; absent if the record has none.
  std::optional<NumberView> value;  // bits of a register, Hz, passes of a loop
  std::optional<uint8_t> gate;      // of a run-test, which runs if this is 1 and L is 24 or more
  std::vector<FieldView> fields;
  std::optional<uint8_t> closing;  // the byte that ended the body: 23, or what was in its place

  // Why the player stops inside the record, or would go backwards; the fields before that point are
  // filled in.
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
  // The number of register bits of a shift or a pad.
  uint32_t bits() const {
    return value ? value->low() : 0;
  }
  // The block in force among those with this tag, the last one; null if there is none.
  const BlockView *Block(Tag tag) const;
  // The end of the record by its own length.
  int64_t EndByLength() const {
    return static_cast<int64_t>(opcode_offset) + length.value / 8;
  }
};

// A record with more fields than this counts as malformed, which keeps record views small.
constexpr size_t kMaxFields = 4096;

// Reads the record whose '^' is at `offset`, which must lie in the image, by its content, as the
// player does. `end` of the result is the first byte that the player has not read: given by L only
// for the records that it skips, by content for all others, even if L is wrong. A record with a
// fault ends at the fault. `plain`: as the header says; `index`: the record's number.
RecordView ReadRecord(Bytes image, bool plain, uint64_t offset, uint64_t index);

// The same, into a new `record`.
void ReadRecord(Bytes image, bool plain, uint64_t offset, uint64_t index, RecordView &record);

// The data of one field of a shift or pad, BytesOfBits(bits) bytes; empty if the record has no
// field with this tag. Bytes that the block does not fill are 0.
Buffer FieldData(Bytes image, const RecordView &record, Tag tag);

// Walks the records of an image from the first to the last.
class Reader {
 public:
  // The header must not have a fault. The caller owns the image, which must outlive the reader.
  Reader(Bytes image, const HeaderView &header)
      : image_(image), plain_(header.plain()), position_(header.size) {}

  // The next record; none at the end of the file: the end of the image, a byte other than '^' where
  // a record should begin, or the end of a record with a fault (which itself is returned once).
  std::optional<RecordView> Next();

  // The offset of the next record, or of what is in its place. At or past the image's end: the
  // whole image was read.
  uint64_t position() const {
    return position_;
  }
  uint64_t records() const {
    return records_;
  }

  // Continues at `position`, which should hold a '^'.
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
