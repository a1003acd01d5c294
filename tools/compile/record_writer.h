// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes the records of a compiled file, with the records that the player needs around them, and
// accounts for the cost of playing them.
#pragma once

#include <cstdint>
#include <optional>

#include "svf/number.h"
#include "tools/compile/record_folder.h"
#include "tvb/block.h"
#include "tvb/block_encoder.h"
#include "tvb/player.h"
#include "tvb/writer.h"

namespace tool {

// The fields of one run-test record: a time or, if that is 0, a number of clocks.
struct RunTestPlan {
  uint64_t microseconds = 0;
  uint64_t clocks = 0;  // that the player will give in either case
};

// The player adds a record's time and count, so only one of the two is written: the longer one at
// `hz`, the player's frequency. The player converts a time to clocks, rounding down, and then holds
// every clock for its period; so a time is kept only if it gives all the clocks that fill it. Where
// rounding would lose one, a sufficient count of clocks is written instead. Nothing if the time is
// longer than a record can hold.
std::optional<RunTestPlan> PlanRunTest(uint64_t count, const svf::Decimal &seconds, uint32_t hz);

// The totals written.
struct WrittenCounts {
  uint64_t instruction_scans = 0;
  uint64_t data_scans = 0;
  uint64_t run_tests = 0;
  uint64_t bits = 0;  // shifted bits, including pads

  uint64_t scans() const {
    return instruction_scans + data_scans;
  }
};

// Adds up the player's cost for scans and run-tests, without its reset and its IDCODE query before
// the file. Times are in nanoseconds.
class PlayCost {
 public:
  // `pin_ns`: the duration of one pin callback.
  explicit PlayCost(double pin_ns) : pin_ns_(pin_ns) {}

  // Adds a scan (opcode kSir or kSdr) without header and trailer, of which `compared` bits are
  // compared, while the frequency is `hz`. The player does not hold scans to that frequency; `hz`
  // counts only for time_at_frequency().
  void AddScan(tvb::Opcode opcode, uint64_t bits, uint64_t compared, uint32_t hz);

  // Adds a run-test of that many clocks at `hz`, for which the player does wait.
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

  // The time if every clock took its period at the frequency in force.
  double time_at_frequency() const {
    return time_at_frequency_;
  }

  // The time if only pin calls and the waits of run-tests took time.
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

// Passes the bytes of the file to a sink as they become final, header first.
//
// The file does not depend on state that the player keeps from earlier downloads: it starts by
// clearing the header and trailer registers and setting the frequency anew. Only an opening record
// comes before that, because the player looks for the target's place in the first record.
class RecordWriter {
 public:
  // `plain`: the header says that blocks are raw, and `blocks` is ignored. `pin_ns`: the duration
  // of a pin call, for cost(). `longest_wait`: of a run-test in microseconds, 0 for no limit.
  RecordWriter(bool plain, const tvb::BlockChoice &blocks, double pin_ns, uint64_t longest_wait,
               RecordFolder::Sink sink);
  RecordWriter(const RecordWriter &) = delete;
  RecordWriter &operator=(const RecordWriter &) = delete;

  // Writes the first record, which tells the target's place: one made for that, or an instruction
  // scan of the file's own. Call one of them before all else, or none. `limit`: of the frequency,
  // as for SetFrequency(), by which the cost of this record is counted; the file sets none yet.
  void Opening(const tvb::ChainPlace &place, uint8_t instruction, uint32_t limit);
  void OpeningScan(const tvb::Shift &scan, uint32_t limit);

  // Writes a scan. An all-zero mask means no comparison.
  void Scan(tvb::Opcode opcode, const tvb::Shift &scan);

  // Writes a run-test, in pieces if it is longer than the longest wait or than the player can
  // count; nothing if there are no clocks. The player holds its processor for the time of a piece.
  void RunTest(const RunTestPlan &plan);

  // Limits the frequency from here on, to less than 2^31 Hz; 0: no limit.
  void SetFrequency(uint32_t limit);

  // Closes the file with a record without effect: the player notices a failed comparison only when
  // the next record starts.
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

  // The one frequency of all clocks, or 0 if there were several.
  uint32_t only_hz() const {
    return several_rates_ ? 0 : tvb::HzWithin(limit_);
  }

 private:
  void Begin();
  void WriteFrequency();
  uint64_t ClocksOfPiece(uint64_t clocks) const;
  void Put(tvb::Opcode opcode, const tvb::Shift &scan, uint32_t limit);
  void AccountForScan(tvb::Opcode opcode, const tvb::Shift &scan, uint32_t limit);
  void NoteRate(uint32_t limit);

  RecordFolder folder_;
  tvb::BlockEncoder encoder_;
  tvb::Writer writer_;
  uint64_t longest_wait_;
  PlayCost cost_;
  WrittenCounts counts_;

  bool begun_ = false;  // a record was written, other than the opening

  uint32_t limit_ = 0;       // of the frequency; 0: none
  uint32_t written_hz_ = 0;  // the limit last written to the file
  uint32_t clocked_hz_ = 0;  // of the last clocks; 0: none yet
  bool several_rates_ = false;
};

}  // namespace tool
