// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Compiles the statements of an SVF file to the records of a TVB file.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "svf/parser.h"
#include "svf/scan_register.h"
#include "tools/compile/joined_scan.h"
#include "tools/compile/opening.h"
#include "tools/compile/record_writer.h"
#include "tools/compile/source_notes.h"
#include "tools/compile/tap_tracker.h"
#include "tvb/block.h"
#include "tvb/identity_check.h"
#include "tvb/player.h"
#include "tvb/record.h"

namespace tool {

struct CompileOptions {
  std::optional<tvb::ChainPlace> chain;  // of the target; none: taken from the file's pads
  std::optional<RequiredIdcode> idcode;  // that every file compares first
  bool pause_as_idle = false;
  bool split = true;              // a reset after a scan begins another file
  uint64_t longest_wait = 20000;  // of one run-test in microseconds; 0: no limit
  bool plain = false;             // header: blocks are raw and have no mode byte
  tvb::BlockChoice blocks;        // if not plain
  double pin_ns = 100;            // duration of a pin call, for the time estimate
};

// A TVB file that has been written.
struct WrittenFile {
  WrittenCounts counts;
  PlayCost cost;
  uint64_t records = 0;
  uint64_t loops = 0;
  uint32_t only_hz = 0;  // as RecordWriter::only_hz()
};

// Takes statements in file order and passes the bytes of the TVB files to sinks as they become
// final: one file, and another for each reset that something is played before and after. All
// functions throw svf::Error where a statement has no form in a TVB file.
class Compiler {
 public:
  // Returns the sink of the next file; `reset`: the offset of the reset that begins it, none for
  // the first.
  using NextFile = std::function<RecordFolder::Sink(std::optional<size_t> reset)>;

  // `notes` must live as long as the object.
  Compiler(const CompileOptions &options, SourceNotes &notes, NextFile next_file);

  // What one scan statement gives to a scan of a TVB file, in shift order.
  struct Piece {
    size_t offset = 0;     // of the statement
    uint32_t header = 0;   // bits of HIR or HDR
    uint32_t bits = 0;     // its own
    uint32_t trailer = 0;  // bits of TIR or TDR
  };

  // Tells `watcher` from now on of the scans that are written: the number of the scan in the file
  // being written, from 1, its kind, and its pieces.
  using WatchScan =
      std::function<void(uint64_t number, svf::Register which, std::span<const Piece> pieces)>;
  void WatchScans(WatchScan watcher) {
    watch_scan_ = std::move(watcher);
  }

  // Compiles the next statement.
  void Compile(const svf::Statement &statement);

  // Ends the SVF file; call it once, last.
  void Finish();

  // The files so far; all after Finish().
  const std::vector<WrittenFile> &files() const {
    return files_;
  }

 private:
  void Compile(const svf::ScanStatement &scan);
  void Compile(const svf::EndStatement &end);
  void Compile(const svf::StateStatement &state);
  void Compile(const svf::RunTestStatement &run);
  void Compile(const svf::FrequencyStatement &frequency);
  void Compile(const svf::TrstStatement &trst);
  void Compile(const svf::ParallelStatement &);

  void BeginFile(std::optional<size_t> reset);
  void EndFile();
  void ResetIfAsked();

  void LoadPad(const svf::ScanStatement &pad);
  void CheckLength(const svf::ScanStatement &scan) const;
  uint64_t PadBitsOf(svf::Register scan) const;
  void AddPiece(const svf::ScanStatement &scan);
  void WriteScan();
  void RefuseLength(uint64_t clocks);
  void LetGo();
  void WarnOfInstructionLength(const svf::ScanStatement &scan);
  void WarnOfRisk(const std::optional<tvb::IdentityCheck::Risk> &risk);
  svf::ScanRegister &Loaded(svf::Register which) {
    return registers_[static_cast<size_t>(which)];
  }
  const svf::ScanRegister &Loaded(svf::Register which) const {
    return registers_[static_cast<size_t>(which)];
  }

  void RunTest(const RunTestPlan &plan);
  void SetFrequency(uint32_t hz);
  uint32_t hz() const {
    return tvb::HzWithin(limit_);
  }

  void Open(const tvb::Shift *first);
  bool Opening(const tvb::Shift *first);
  bool HoldsRunTest() const;
  bool IsTold(const tvb::Shift &first) const;
  uint8_t IdcodeInstruction(const tvb::Shift *first) const;
  bool FitsOpening(const tvb::ChainPlace &place);
  std::optional<tvb::ChainPlace> TargetPlace();

  void CheckMaximum(const svf::RunTestStatement &run, uint64_t clocks);

  CompileOptions options_;
  SourceNotes &notes_;
  NextFile next_file_;
  std::optional<RecordWriter> writer_;  // of the file being written
  std::vector<WrittenFile> files_;
  TapTracker tap_;
  ScanJoiner joiner_;

  size_t offset_ = 0;  // of the current statement
  std::array<svf::ScanRegister, svf::kRegisters> registers_;
  svf::TapState end_ir_ = svf::TapState::kIdle;
  svf::TapState end_dr_ = svf::TapState::kIdle;
  svf::TapState run_ = svf::TapState::kIdle;
  svf::TapState run_end_ = svf::TapState::kIdle;
  uint32_t limit_ = 0;  // FREQUENCY in hertz; 0: none

  // The scan that is paused, or being written: its pieces' bits are in joiner_.
  struct PausedScan {
    svf::Register which = svf::Register::kSir;
    std::vector<Piece> pieces;  // empty: there is none
    uint64_t bits = 0;          // in all, also where they are too many for joiner_
  };
  PausedScan scan_;
  WatchScan watch_scan_;

  // What is written only later: before the first scan, because the opening record, which is known
  // only then, comes first; while a scan is paused, a limit of the frequency.
  using Held = std::variant<RunTestPlan, uint32_t>;
  std::vector<Held> held_;
  bool open_ = false;
  std::optional<tvb::ChainPlace> place_;  // of the target, from the first scan on

  tvb::IdentityCheck identity_;
  bool warned_of_instruction_length_ = false;
  bool warned_of_system_clock_ = false;
  bool warned_of_maximum_ = false;
};

}  // namespace tool
