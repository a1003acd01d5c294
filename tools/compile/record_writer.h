// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes the records of a TVB file: scans, run-tests and frequencies, in the smallest form, and
// what the player needs around them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/compile/block_encoder.h"
#include "tools/compile/joined_scan.h"
#include "tools/compile/play_cost.h"
#include "tools/compile/record_folder.h"
#include "tvb/block.h"
#include "tvb/bytes.h"

namespace tool {

// What was written.
struct WrittenCounts {
  uint64_t instruction_scans = 0;
  uint64_t data_scans = 0;
  uint64_t run_tests = 0;
  uint64_t bits = 0;  // shifted, pads included
};

// Gives the bytes of the file to a sink as they become final, header first.
//
// What the player keeps from earlier downloads does not matter to the file: it begins by taking
// away header and trailer registers and by setting the frequency anew. Only the first record can
// come before that, for the player looks at it before it plays anything; since files tell late what
// it has to be, everything is held back until Settle().
class RecordWriter {
 public:
  // `plain`: the header says that blocks are raw, and `blocks` is not looked at. `pin_ns`: what a
  // pin call takes, for cost().
  RecordWriter(bool plain, const tvb::BlockChoice &blocks, double pin_ns, RecordFolder::Sink sink);

  // Settles the first record: `opening`, an instruction scan, or none in particular where that is
  // null. Call it once; after a megabyte of records it has happened by itself.
  void Settle(const ScanData *opening);
  bool settled() const {
    return settled_;
  }

  // A scan. A comparison under a mask of zeros is none; bits that may be anything are chosen.
  void Scan(bool instruction, const ScanData &data);

  // A run-test of so many clocks at hz(); it is written as a time if that is not 0. None if there
  // are no clocks.
  void RunTest(uint64_t microseconds, uint64_t clocks);

  // Bounds the frequency from here on, to less than 2^31 Hz; 0: by nothing.
  void SetFrequency(uint32_t hz);

  // The frequency that run-tests are clocked at: where nothing bounds it, the player's own.
  uint32_t hz() const;

  // Closes the file with a record that does nothing: the player sees a failed comparison when the
  // next record starts. It must be settled.
  void Finish();

  const WrittenCounts &counts() const {
    return counts_;
  }
  const PlayCost &cost() const {
    return cost_;
  }
  const RecordFolder &folder() const {
    return folder_;
  }

  // The one frequency that all clocks were at, or 0 if there were several.
  uint32_t only_hz() const {
    return several_rates_ ? 0 : hz();
  }

 private:
  void Begin();
  void TellFrequency();
  void Put(uint8_t opcode, const tvb::Buffer &body);
  void NoteRate();

  RecordFolder::Sink sink_;
  RecordFolder folder_;
  BlockEncoder encoder_;
  PlayCost cost_;
  WrittenCounts counts_;

  bool begun_ = false;  // there are records
  bool settled_ = false;
  tvb::Buffer early_bytes_;  // records that are held back
  std::vector<size_t> early_ends_;

  uint32_t hz_ = 0;          // 0: not bounded
  uint32_t told_hz_ = 0;     // of that, what the player has been told
  uint32_t players_hz_ = 0;  // that it is at; 0: not set
  uint32_t clocked_hz_ = 0;  // at which the last clocks were
  bool several_rates_ = false;
  tvb::Buffer body_;
  tvb::Buffer record_;
};

}  // namespace tool
