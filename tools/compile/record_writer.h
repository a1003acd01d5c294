// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes the records of a compiled file, with what the player needs around them, and accounts for
// what playing them will cost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "svf/number.h"
#include "tools/compile/record_folder.h"
#include "tvb/block.h"
#include "tvb/block_encoder.h"
#include "tvb/writer.h"

namespace tool {

// A run-test as one record says it: for a time or, if that is 0, for a number of clocks.
struct RunTestPlan {
  uint64_t microseconds = 0;
  uint64_t clocks = 0;  // that the player will give, either way
};

// The player adds a record's time and count up, so one of the two is written: whichever is longer
// at `hz`, the frequency that the player is at. It makes clocks of a time, rounding down, and then
// makes every clock last its period; so a time is kept to only if it gives all the clocks that fill
// it. Where rounding would lose one, the count of clocks that is long enough is written in its
// place. Nothing if the time is longer than a record can hold.
std::optional<RunTestPlan> PlanRunTest(uint64_t count, const svf::Decimal &seconds, uint32_t hz);

// What was written.
struct WrittenCounts {
  uint64_t instruction_scans = 0;
  uint64_t data_scans = 0;
  uint64_t run_tests = 0;
  uint64_t bits = 0;  // shifted, pads included
};

// Adds up what the player does for scans and run-tests, its reset and its query of the IDCODE
// before the file left out. Times are in nanoseconds.
class PlayCost {
 public:
  // `pin_ns`: what one call of a pin callback takes.
  explicit PlayCost(double pin_ns) : pin_ns_(pin_ns) {}

  // A scan (opcode kSir or kSdr) without header and trailer, of which `compared` bits are compared,
  // while the clock is at `hz`. The player does not hold scans to that frequency; `hz` only counts
  // for time_at_frequency().
  void AddScan(tvb::Opcode opcode, uint64_t bits, uint64_t compared, uint32_t hz);

  // A run-test of so many clocks at `hz`, which the player does wait for.
  void AddRunTest(uint64_t clocks, uint32_t hz);

  uint64_t clocks() const {
    return clocks_;
  }
  uint64_t run_test_clocks() const {
    return run_test_clocks_;
  }
  uint64_t pin_calls() const {
    return pin_calls_;
  }

  // If every clock took its period at the frequency in force.
  double time_at_frequency() const {
    return time_at_frequency_;
  }

  // If nothing took time but pin calls and the waits of run-tests.
  double time_of_pins() const {
    return time_of_pins_;
  }

 private:
  void AddCalls(uint64_t calls);
  void AddClocks(uint64_t clocks, uint32_t hz);

  double pin_ns_;
  uint64_t clocks_ = 0;
  uint64_t run_test_clocks_ = 0;
  uint64_t pin_calls_ = 0;
  double time_at_frequency_ = 0;
  double time_of_pins_ = 0;
};

// Gives the bytes of the file to a sink as they become final, header first.
//
// What the player keeps from earlier downloads does not matter to the file: it begins by taking
// away header and trailer registers and by setting the frequency anew. Only the first record can
// come before that, for the player looks at it before it plays anything; since files tell late what
// it has to be, everything is held back until Open().
class RecordWriter {
 public:
  // `plain`: the header says that blocks are raw, and `blocks` is not looked at. `pin_ns`: what a
  // pin call takes, for cost().
  RecordWriter(bool plain, const tvb::BlockChoice &blocks, double pin_ns, RecordFolder::Sink sink);
  RecordWriter(const RecordWriter &) = delete;
  RecordWriter &operator=(const RecordWriter &) = delete;

  // Makes `first`, an instruction scan, the first record, or none in particular where that is null,
  // and lets go of what was held back. Call it once, and only while not is_open().
  void Open(const tvb::Shift *first);

  // True after Open(), and once more than a megabyte of records was held back: it is too late then
  // to put one before them.
  bool is_open() const {
    return is_open_;
  }

  // A scan. A comparison under a mask of zeros is none; bits that may be anything are chosen.
  void Scan(tvb::Opcode opcode, const tvb::Shift &scan);

  // A run-test of so many clocks at hz(); it is written as a time if that is not 0. None if there
  // are no clocks.
  void RunTest(uint64_t microseconds, uint64_t clocks);

  // Bounds the frequency from here on, to less than 2^31 Hz; 0: by nothing.
  void SetFrequency(uint32_t hz);

  // The frequency that run-tests are clocked at: where nothing bounds it, the player's own.
  uint32_t hz() const;

  // Closes the file with a record that does nothing: the player sees a failed comparison when the
  // next record starts. It must be open.
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
  void WriteFrequency();
  void HoldBack(tvb::Bytes record);
  void LetGo();
  void AccountForScan(tvb::Opcode opcode, const tvb::Shift &scan);
  void NoteRate();

  RecordFolder folder_;
  tvb::BlockEncoder encoder_;
  tvb::Encoder encode_;  // encoder_, or none
  tvb::Writer writer_;
  PlayCost cost_;
  WrittenCounts counts_;

  bool begun_ = false;  // there are records
  bool is_open_ = false;
  tvb::Buffer held_bytes_;  // records that are held back
  std::vector<size_t> held_ends_;

  uint32_t hz_ = 0;          // 0: not bounded
  uint32_t written_hz_ = 0;  // of that, what the file says
  uint32_t clocked_hz_ = 0;  // of the last clocks; 0: none yet
  bool several_rates_ = false;
};

}  // namespace tool
