// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Walks the records of an image in the order in which they are played.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/reader.h"
#include "tvb/record_view.h"

namespace tvb {

// A record at the time it is played.
struct PlayedRecord {
  RecordView record;
  uint64_t step = 0;    // how many records have been played, this one included
  uint64_t loop = 0;    // number of the LOOP record that it is repeated by; 0 outside of loops
  uint64_t pass = 1;    // which pass of that loop this is, from 1
  uint64_t passes = 1;  // of how many
};

// Bits of the four header and trailer registers.
struct PadBits {
  uint32_t hir = 0;
  uint32_t tir = 0;
  uint32_t hdr = 0;
  uint32_t tdr = 0;

  // Takes over what the record sets, if it is a header or trailer record.
  void Apply(const RecordView &record);
  uint32_t header(uint8_t opcode) const {
    return opcode == kSir ? hir : hdr;
  }
  uint32_t trailer(uint8_t opcode) const {
    return opcode == kSir ? tir : tdr;
  }
};

// Follows loops as the player does: it has one counter, which a LOOP inside a loop overwrites, and
// plays the body of a loop once where the count is not positive. The LOOP record itself is played
// once, ENDLOOP with every pass. Records are read again with each pass; nothing is kept of them.
class PlayOrder {
 public:
  // As Reader.
  PlayOrder(Bytes image, const HeaderView &header);

  // The next record; none at the end, as Reader::Next().
  std::optional<PlayedRecord> Next();

  // The header and trailer registers in force for the record given last: if it is a shift, those
  // that it is wrapped in. Empty at the beginning, as in a player that has just been loaded.
  const PadBits &pads() const {
    return pads_;
  }
  uint64_t position() const {
    return position_;
  }

 private:
  void FollowLoop(const RecordView &record);

  Bytes image_;
  bool plain_;
  uint64_t position_;
  uint64_t index_ = 0;
  uint64_t step_ = 0;
  bool faulted_ = false;
  PadBits pads_;
  int32_t counter_ = 0;
  uint64_t loop_start_ = 0;  // position of the first record of the body
  uint64_t loop_index_ = 0;  // number of the LOOP record
  uint64_t loop_ = 0;        // the same while its body is played
  uint64_t passes_ = 1;
};

}  // namespace tvb
