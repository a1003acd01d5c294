// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The records of an image in play order.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/player.h"
#include "tvb/reader.h"

namespace tvb {

// A record as it is played.
struct PlayedRecord {
  RecordView record;
  uint64_t step = 0;    // number of records played, including this one
  uint64_t loop = 0;    // number of the LOOP record that repeats it; 0 outside loops
  uint64_t pass = 1;    // pass of that loop, from 1
  uint64_t passes = 1;  // total passes of that loop
  uint64_t clocks = 0;  // TCK clocks of the record; 0 if it has a fault
};

// Follows loops as the player does: it has a single counter, which a LOOP inside a loop overwrites,
// and it plays the body of a loop once if the count is not positive. The LOOP record itself is
// played once, ENDLOOP in every pass. Records are read again in each pass; nothing of them is kept.
class PlayOrder {
 public:
  // As for Reader. `player`: the player that is to play the file, with the state left by earlier
  // files.
  PlayOrder(Bytes image, const HeaderView &header, const Player &player = {});

  // The next record; none at the end, as for Reader::Next().
  std::optional<PlayedRecord> Next();

  // The player after the record returned last, and the header and trailer registers in force for
  // that record.
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

// The record of scan `number`, from 1 in play order; none if the file has fewer before its end or
// its fault. Every SIR and SDR record is a scan. Takes time linear in the image: the passes of a
// loop are counted, not walked.
std::optional<RecordView> FindScan(Bytes image, const HeaderView &header, uint64_t number);

// How long a file takes to play.
struct PlayLength {
  uint64_t clocks = 0;
  uint64_t records = 0;
};

// The clocks and records of a file in a freshly loaded player, assuming that each pass of a loop is
// as long as the first; what the player does before the first record is not counted. A malformed
// file counts up to its fault. Takes time linear in the image.
PlayLength MeasurePlay(Bytes image, const HeaderView &header);

// The target's place as the player derives it from the file's first record.
ChainPlace TargetOf(Bytes image, const HeaderView &header);

// All clocks of its download, those before the first record too.
uint64_t DownloadClocks(Bytes image, const HeaderView &header);

}  // namespace tvb
