// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/compiler.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "svf/text.h"
#include "tools/compile/opening.h"
#include "tvb/number.h"
#include "tvb/record.h"

namespace tool {
namespace {

using svf::Field;
using svf::Register;

tvb::Opcode OpcodeOf(Register scan) {
  return scan == Register::kSir ? tvb::kSir : tvb::kSdr;
}

}  // namespace

Compiler::Compiler(const CompileOptions &options, SourceNotes &notes, NextFile next_file)
    : options_(options),
      notes_(notes),
      next_file_(std::move(next_file)),
      tap_(notes, options.pause_as_idle) {
  BeginFile(std::nullopt);
}

void Compiler::Compile(const svf::Statement &statement) {
  offset_ = statement.offset;
  if (!statement.ended) {
    notes_.Note(offset_,
                fmt::format("this {} ends with the file, without ';'; it is taken as whole: "
                            "see that nothing is missing after it",
                            statement.name));
  }
  std::visit([this](const auto &what) { Compile(what); }, statement.what);
}

void Compiler::Finish() {
  if (notes_.refused()) {
    WriteScan();  // it may be too long as well
    return;
  }
  tap_.Finish();
  WriteScan();
  WarnOfRisk(identity_.End());
  if (!open_ && !HoldsRunTest()) {
    notes_.Warning(offset_, "the file has no scan and no RUNTEST; nothing will be played");
  }
  EndFile();
}

// The player keeps no state of ours from one file to the next, so what is in force is set anew.
void Compiler::BeginFile(std::optional<size_t> reset) {
  writer_.emplace(options_.plain, options_.blocks, options_.pin_ns, options_.longest_wait,
                  next_file_(reset));
  writer_->SetFrequency(limit_);
  open_ = false;
}

void Compiler::EndFile() {
  WriteScan();
  if (!open_) {
    place_ = TargetPlace();
    Open(nullptr);
  }
  writer_->Finish();
  files_.push_back({writer_->counts(), writer_->cost(), writer_->folder().records(),
                    writer_->folder().loops(), writer_->only_hz()});
}

// Call it before anything that is played.
void Compiler::ResetIfAsked() {
  const std::optional<size_t> reset = tap_.reset();
  if (!reset) {
    return;
  }
  tap_.BeginFile();
  if (!options_.split) {
    notes_.Refuse(
        *reset,
        "the TAP is reset in the middle of the file, but the player resets it at a file's "
        "start only; take this reset out, or do without --no-split");
    return;
  }
  EndFile();
  BeginFile(reset);
}

void Compiler::Compile(const svf::ScanStatement &scan) {
  if (svf::IsPad(scan.which)) {
    LoadPad(scan);
    return;
  }
  const bool instruction = scan.which == Register::kSir;
  CheckLength(scan);
  WarnOfInstructionLength(scan);
  ResetIfAsked();
  if (!tap_.BeginScan(instruction, offset_)) {
    WriteScan();
  }
  Loaded(scan.which).Load(scan);
  AddPiece(scan);
  tap_.EndScan(instruction, instruction ? end_ir_ : end_dr_, offset_);
  if (tap_.scan_pauses()) {
    joiner_.Keep();
  } else {
    WriteScan();
  }
}

// A scan that would be too long with those that it resumes is only counted, so that the message
// tells how long; with --pause-as-idle it is a scan of its own.
void Compiler::AddPiece(const svf::ScanStatement &scan) {
  const uint64_t bits = PadBitsOf(scan.which) + scan.bits;
  const bool fits = tvb::ScanClocks(OpcodeOf(scan.which), scan_.bits + bits) <= tvb::kMaxScanClocks;
  if (!fits && options_.pause_as_idle) {
    notes_.Warning(offset_, fmt::format("this {} resumes a paused scan, but together they are too "
                                        "long for the player; taken as Run-Test/Idle: the paused "
                                        "scan's register is updated before this one captures anew",
                                        Name(scan.which)));
    WriteScan();
  }
  if (scan_.pieces.empty()) {
    scan_.which = scan.which;
    if (!open_) {
      place_ = TargetPlace();
    }
  }
  const bool instruction = scan.which == Register::kSir;
  const svf::ScanRegister &header = Loaded(instruction ? Register::kHir : Register::kHdr);
  const svf::ScanRegister &trailer = Loaded(instruction ? Register::kTir : Register::kTdr);
  scan_.pieces.push_back({offset_, header.bits(), scan.bits, trailer.bits()});
  scan_.bits += bits;
  if (fits || options_.pause_as_idle) {
    joiner_.Add(header, Loaded(scan.which), trailer);
  }
}

// Writes the scan that was paused, if there is one, and what had to wait for it.
void Compiler::WriteScan() {
  if (scan_.pieces.empty()) {
    return;
  }
  const tvb::Opcode opcode = OpcodeOf(scan_.which);
  if (const uint64_t clocks = tvb::ScanClocks(opcode, scan_.bits); clocks > tvb::kMaxScanClocks) {
    RefuseLength(clocks);
  }
  const tvb::Shift joined = joiner_.Scan();
  if (!identity_.settled()) {
    WarnOfRisk(identity_.Scan({scan_.pieces.front().offset}, opcode, joined));
  }
  if (!open_) {
    Open(&joined);
  } else {
    writer_->Scan(opcode, joined);
    LetGo();
  }
  if (watch_scan_) {
    watch_scan_(writer_->counts().scans(), scan_.which, scan_.pieces);
  }
  joiner_.Clear();
  scan_.pieces.clear();
  scan_.bits = 0;
}

void Compiler::WarnOfInstructionLength(const svf::ScanStatement &scan) {
  if (scan.which != Register::kSir || scan.bits % tvb::kInstructionBits == 0 ||
      warned_of_instruction_length_) {
    return;
  }
  warned_of_instruction_length_ = true;
  notes_.Warning(scan.bits_offset, tvb::InstructionLengthRisk(scan.bits));
}

// With --require-idcode the IDCODE is compared before everything else.
void Compiler::WarnOfRisk(const std::optional<tvb::IdentityCheck::Risk> &risk) {
  if (risk && !options_.idcode) {
    notes_.Warning(risk->scan.offset, risk->message);
  }
}

void Compiler::LoadPad(const svf::ScanStatement &pad) {
  if (pad.bits > tvb::kMaxScanClocks) {
    throw svf::Error(pad.bits_offset,
                     fmt::format("no scan could hold {} bits of {}; it is at most {} clocks long",
                                 pad.bits, Name(pad.which), tvb::kMaxScanClocks));
  }
  Loaded(pad.which).Load(pad);
}

void Compiler::CheckLength(const svf::ScanStatement &scan) const {
  const uint64_t pads = PadBitsOf(scan.which);
  if (pads + scan.bits == 0) {
    throw svf::Error(scan.bits_offset, fmt::format("an {} of 0 bits shifts nothing and would leave "
                                                   "the player's TAP in a pause; take it out",
                                                   Name(scan.which)));
  }
  const uint64_t clocks = tvb::ScanClocks(OpcodeOf(scan.which), pads + scan.bits);
  if (clocks > tvb::kMaxScanClocks) {
    throw svf::Error(
        scan.bits_offset,
        fmt::format("this {} takes {} clocks, {} of them for pads and the way there and back; the "
                    "player holds one byte a clock and an end mark in an allocation of at most "
                    "4 MiB, so {} is the most; split it into shorter scans",
                    Name(scan.which), clocks, clocks - scan.bits, tvb::kMaxScanClocks));
  }
}

void Compiler::RefuseLength(uint64_t clocks) {
  notes_.Refuse(
      scan_.pieces.front().offset,
      fmt::format("this {0} pauses and is resumed {1} times; that is one scan of {2} bits, "
                  "which takes {3} clocks, and the player holds {4} at most; end it in "
                  "IDLE now and then ({5} IDLE), or take Run-Test/Idle for such a pause "
                  "with --pause-as-idle",
                  Name(scan_.which), scan_.pieces.size() - 1, scan_.bits, clocks,
                  tvb::kMaxScanClocks, scan_.which == Register::kSir ? "ENDIR" : "ENDDR"),
      true);
}

uint64_t Compiler::PadBitsOf(Register scan) const {
  return scan == Register::kSir
             ? uint64_t{Loaded(Register::kHir).bits()} + Loaded(Register::kTir).bits()
             : uint64_t{Loaded(Register::kHdr).bits()} + Loaded(Register::kTdr).bits();
}

void Compiler::Compile(const svf::EndStatement &end) {
  (end.instruction ? end_ir_ : end_dr_) = end.state;
}

void Compiler::Compile(const svf::StateStatement &state) {
  const TapTracker::IdleClocks clocks = tap_.Walk(state, offset_);
  WriteScan();
  RunTest({0, clocks.before});
  if (clocks.after > 0) {
    ResetIfAsked();
    RunTest({0, clocks.after});
  }
}

void Compiler::Compile(const svf::RunTestStatement &run) {
  if (run.run) {
    run_ = run.run->state;
    run_end_ = run_;
  }
  if (run.end) {
    run_end_ = run.end->state;
  }
  const auto plan = PlanRunTest(run.count ? run.count->clocks : 0,
                                run.minimum ? run.minimum->seconds : svf::Decimal(), hz());
  if (!plan || plan->clocks > 0) {
    ResetIfAsked();
  }
  tap_.RunTest(run_, run_end_, offset_);
  WriteScan();
  if (run.count && run.count->system_clock && !warned_of_system_clock_) {
    warned_of_system_clock_ = true;
    notes_.Warning(run.count->offset,
                   "the player has no system clock; clocks of SCK are given as clocks of TCK");
  }
  if (!plan) {
    throw svf::Error(run.minimum->offset,
                     fmt::format("a RUNTEST takes at most {} seconds in a TVB file; write several",
                                 tvb::kMaxTime / 1000000));
  }
  CheckMaximum(run, plan->clocks);
  RunTest(*plan);
}

void Compiler::CheckMaximum(const svf::RunTestStatement &run, uint64_t clocks) {
  constexpr uint64_t kNanoseconds = 1000000000;
  if (!run.maximum) {
    return;
  }
  const uint64_t maximum = run.maximum->seconds.TimesDown(kNanoseconds);
  if (run.minimum && run.minimum->seconds.TimesDown(kNanoseconds) > maximum) {
    throw svf::Error(run.maximum->offset,
                     "the MAXIMUM is less than the minimum time before it; correct one of them");
  }
  const double taken = static_cast<double>(clocks) * kNanoseconds / hz();
  if (taken > static_cast<double>(maximum) && !warned_of_maximum_) {
    warned_of_maximum_ = true;
    notes_.Warning(run.maximum->offset,
                   fmt::format("the {} clocks of this RUNTEST take longer than its MAXIMUM at {} "
                               "HZ, the frequency in force",
                               clocks, hz()));
  }
}

void Compiler::Compile(const svf::FrequencyStatement &frequency) {
  uint32_t hz = 0;
  if (frequency.hertz) {
    // It is an upper bound, so a lower frequency will do.
    hz = static_cast<uint32_t>(std::min<uint64_t>(frequency.hertz->TimesDown(1), tvb::kMaxNumber));
    if (frequency.hertz->TimesUp(1) > tvb::kMaxNumber) {
      notes_.Note(frequency.hertz_offset,
                  fmt::format("a TVB file can say no frequency above {} HZ; this one is taken as "
                              "that",
                              tvb::kMaxNumber));
    }
    if (hz == 0) {
      throw svf::Error(frequency.hertz_offset,
                       "a frequency below 1 HZ has no form in a TVB file; write at least 1 HZ, or "
                       "FREQUENCY alone for full speed");
    }
  }
  SetFrequency(hz);
}

void Compiler::Compile(const svf::TrstStatement &trst) {
  if (trst.mode == svf::TrstStatement::Mode::kOn) {
    tap_.HoldInReset(offset_);
    WriteScan();
  } else {
    tap_.EndReset();
  }
}

void Compiler::Compile(const svf::ParallelStatement &) {
  throw svf::Error(offset_,
                   "PIO and PIOMAP have no form in a TVB file: the player drives TCK, TMS "
                   "and TDI alone; take them out, or have the tool write none");
}

void Compiler::RunTest(const RunTestPlan &plan) {
  if (plan.clocks != 0 && !identity_.settled()) {
    WarnOfRisk(identity_.Wait());
  }
  if (open_) {
    writer_->RunTest(plan);
  } else if (plan.clocks != 0) {
    held_.push_back(plan);
  }
}

void Compiler::SetFrequency(uint32_t hz) {
  limit_ = hz;
  if (tap_.reset()) {
    return;  // the next file, if there is one, sets it
  }
  if (open_ && scan_.pieces.empty()) {
    writer_->SetFrequency(hz);
  } else {
    held_.push_back(hz);
  }
}

// Starts the file, at its first scan (an instruction or a data scan, as scan_ says) or at its end.
void Compiler::Open(const tvb::Shift *first) {
  const bool written = Opening(first);
  open_ = true;
  LetGo();
  if (first != nullptr && !written) {
    writer_->Scan(OpcodeOf(scan_.which), *first);
  }
}

// Writes the opening record, if there is to be one, and compares the IDCODE. True if the opening
// record is the scan.
bool Compiler::Opening(const tvb::Shift *first) {
  if (first != nullptr && IsTold(*first) && !options_.idcode) {
    writer_->OpeningScan(*first, limit_);
    return true;
  }
  const uint8_t instruction = IdcodeInstruction(first);
  const bool fits = !place_ || FitsOpening(*place_);
  if (place_ && !place_->IsAlone() && fits) {
    writer_->Opening(*place_, instruction, limit_);
  }
  if (options_.idcode && fits) {
    CompareIdcode(*writer_, place_.value_or(tvb::ChainPlace()), instruction, *options_.idcode);
  } else if (options_.idcode) {
    notes_.Refuse(offset_, "the chain is too long for a comparison of the IDCODE");
  }
  return false;
}

void Compiler::LetGo() {
  if (held_.empty()) {
    return;
  }
  for (const Held &held : std::exchange(held_, {})) {
    if (const auto *plan = std::get_if<RunTestPlan>(&held)) {
      writer_->RunTest(*plan);
    } else {
      writer_->SetFrequency(std::get<uint32_t>(held));
    }
  }
}

bool Compiler::HoldsRunTest() const {
  return std::any_of(held_.begin(), held_.end(),
                     [](const Held &held) { return std::holds_alternative<RunTestPlan>(held); });
}

// True if the file's first scan itself gives the target's place, or any place if none is known.
bool Compiler::IsTold(const tvb::Shift &first) const {
  if (scan_.which != Register::kSir || HoldsRunTest()) {
    return false;
  }
  const auto told = PlaceToldBy(first);
  return told && (!place_ || *told == *place_);
}

// A file that reads the IDCODE with the other instruction shows it by its first scan.
uint8_t Compiler::IdcodeInstruction(const tvb::Shift *first) const {
  const svf::ScanRegister &sir = Loaded(Register::kSir);
  const bool other = first != nullptr && scan_.which == Register::kSir &&
                     scan_.pieces.size() == 1 && sir.bits() == tvb::kInstructionBits &&
                     sir.tdi() == tvb::ChainInstructions({}, tvb::kOtherIdcode);
  return other ? tvb::kOtherIdcode : tvb::kIdcode;
}

bool Compiler::FitsOpening(const tvb::ChainPlace &place) {
  if (tvb::ScanClocks(tvb::kSir, tvb::kInstructionBits * place.devices()) <= tvb::kMaxScanClocks) {
    return true;
  }
  notes_.Warning(offset_, "the chain is too long for the player to be told the target's place");
  return false;
}

std::optional<tvb::ChainPlace> Compiler::TargetPlace() {
  if (options_.chain) {
    return options_.chain;
  }
  const tvb::PadBits pads = {Loaded(Register::kHir).bits(), Loaded(Register::kTir).bits(),
                             Loaded(Register::kHdr).bits(), Loaded(Register::kTdr).bits()};
  const auto place = PlaceOfPads(pads);
  if (place && (pads.hir != uint64_t{tvb::kInstructionBits} * place->after ||
                pads.tir != uint64_t{tvb::kInstructionBits} * place->before)) {
    notes_.Warning(offset_, fmt::format("the player takes every other device in the chain to have "
                                        "an instruction register of 8 bits, but the pads are {} "
                                        "and {} bits for {} and {} devices; it will not read the "
                                        "IDCODE in this chain",
                                        pads.hir, pads.tir, place->after, place->before));
  }
  return place;
}

}  // namespace tool
