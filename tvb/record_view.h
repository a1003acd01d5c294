// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The header and the records of an image, as they stand in it. Views hold places and numbers, not
// the data itself, and need the image again to get at that.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tvb/block.h"
#include "tvb/cursor.h"
#include "tvb/header.h"
#include "tvb/record.h"

namespace tvb {

// The header. With a fault it is no TVB file; what stands behind the fault is not filled in.
struct HeaderView {
  FileHeader header;
  NumberView number;
  uint64_t size = 0;  // in bytes; the first record starts there
  std::optional<Fault> fault;

  bool plain() const {
    return header.compression == kPlainBlocks;
  }
};

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

}  // namespace tvb
