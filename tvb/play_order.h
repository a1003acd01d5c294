// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The records of an image in the order in which they are played.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/player.h"
#include "tvb/reader.h"

namespace tvb {

// A record at the time it is played.
struct PlayedRecord {
  RecordView record;
  uint64_t step = 0;    // how many records have been played, this one included
  uint64_t loop = 0;    // number of the LOOP record that it is repeated by; 0 outside of loops
  uint64_t pass = 1;    // which pass of that loop this is, from 1
  uint64_t passes = 1;  // of how many
  uint64_t clocks = 0;  // that the player makes of it; 0 if it has a fault
};

// Follows loops as the player does: it has one counter, which a LOOP inside a loop overwrites, and
// plays the body of a loop once where the count is not positive. The LOOP record itself is played
// once, ENDLOOP with every pass. Records are read again with each pass; nothing is kept of them.
class PlayOrder {
 public:
  // As Reader. `player`: the one that is to play the file, with what earlier files have left.
  PlayOrder(Bytes image, const HeaderView &header, const Player &player = {});

  // The next record; none at the end, as Reader::Next().
  std::optional<PlayedRecord> Next();

  // The player after the record given last, and the header and trailer registers in force for it.
  const Player &player() const {
    return player_;
  }
  const PadBits &pads() const {
    return player_.pads();
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
  Player player_;
  int32_t counter_ = 0;
  uint64_t loop_start_ = 0;  // position of the first record of the body
  uint64_t loop_index_ = 0;  // number of the LOOP record
  uint64_t loop_ = 0;        // the same while its body is played
  uint64_t passes_ = 1;
};

// How long a file is to play.
struct PlayLength {
  uint64_t clocks = 0;
  uint64_t records = 0;
};

// Clocks and records of a file in a player that has just been loaded, each pass of a loop taken to
// be as long as the first; what the player does before the first record is left out. A file that is
// not well-formed counts as far as it is. Takes time linear in the image.
PlayLength MeasurePlay(Bytes image, const HeaderView &header);

}  // namespace tvb
