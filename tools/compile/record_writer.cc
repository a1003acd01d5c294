// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/record_writer.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <functional>

#include "tvb/header.h"
#include "tvb/player.h"
#include "tvb/record.h"

namespace tool {
namespace {

constexpr uint64_t kMicrosecondsInSecond = 1000000;

tvb::FileHeader Header(bool plain) {
  return plain ? tvb::FileHeader::Plain() : tvb::FileHeader();
}

bool AnyBit(tvb::Bytes bytes) {
  return std::any_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte != 0; });
}

uint64_t CountBits(tvb::Bytes bytes) {
  uint64_t count = 0;
  for (uint8_t byte : bytes) {
    count += static_cast<unsigned>(std::popcount(byte));
  }
  return count;
}

}  // namespace

std::optional<RunTestPlan> PlanRunTest(uint64_t count, const svf::Decimal &seconds, uint32_t hz) {
  const uint64_t microseconds = seconds.TimesUp(kMicrosecondsInSecond);
  if (microseconds > tvb::kMaxTime) {
    return std::nullopt;
  }
  const uint64_t clocks_of_time = seconds.TimesUp(hz);
  if (clocks_of_time <= count) {
    return RunTestPlan{0, count};
  }
  const bool whole = seconds.TimesDown(kMicrosecondsInSecond) == microseconds;
  const uint64_t clocks = tvb::RunTestClocks(microseconds, 0, tvb::IsWholeKilohertz(hz), hz);
  if (whole && clocks >= clocks_of_time && clocks <= tvb::kMaxCycles) {
    return RunTestPlan{microseconds, clocks};
  }
  return RunTestPlan{0, clocks_of_time};
}

void PlayCost::AddScan(tvb::Opcode opcode, uint64_t bits, uint64_t compared, uint32_t hz) {
  const uint64_t clocks = tvb::ScanClocks(opcode, bits);
  AddClocks(clocks, hz);
  AddCalls(tvb::ScanPinCalls(clocks, bits, compared));
}

void PlayCost::AddRunTest(uint64_t clocks, uint32_t hz) {
  AddClocks(clocks, hz);
  run_test_clocks_ += clocks;
  AddCalls(tvb::RunTestPinCalls(clocks));
  const double taken = 2.0 * static_cast<double>(clocks) * pin_ns_;
  time_of_pins_ += static_cast<double>(tvb::RunTestWait(clocks, hz, static_cast<uint64_t>(taken)));
}

void PlayCost::AddCalls(uint64_t calls) {
  pin_calls_ += calls;
  time_of_pins_ += static_cast<double>(calls) * pin_ns_;
}

void PlayCost::AddClocks(uint64_t clocks, uint32_t hz) {
  clocks_ += clocks;
  time_at_frequency_ += static_cast<double>(clocks) * 1e9 / hz;
}

RecordWriter::RecordWriter(bool plain, const tvb::BlockChoice &blocks, double pin_ns,
                           uint64_t longest_wait, RecordFolder::Sink sink)
    : folder_(sink),
      encoder_(blocks),
      writer_(Header(plain), [this](tvb::Bytes record) { folder_.Put(record); }),
      longest_wait_(longest_wait),
      cost_(pin_ns) {
  if (!plain) {
    writer_.Encode(std::ref(encoder_));
  }
  tvb::Buffer header;
  tvb::AppendHeader(header, Header(plain));
  sink(header);
}

void RecordWriter::Opening(const tvb::ChainPlace &place, uint8_t instruction, uint32_t limit) {
  writer_.Opening(place.before, place.after, instruction);
  tvb::Shift scan;
  scan.bits = static_cast<uint32_t>(tvb::kInstructionBits * place.devices());
  AccountForScan(tvb::kSir, scan, limit);
}

void RecordWriter::OpeningScan(const tvb::Shift &scan, uint32_t limit) {
  Put(tvb::kSir, scan, limit);
}

void RecordWriter::Scan(tvb::Opcode opcode, const tvb::Shift &scan) {
  Begin();
  Put(opcode, scan, limit_);
}

void RecordWriter::RunTest(const RunTestPlan &plan) {
  if (plan.clocks == 0) {
    return;
  }
  Begin();
  ++counts_.run_tests;
  NoteRate(limit_);
  const uint64_t most = ClocksOfPiece(plan.clocks);
  if (plan.microseconds > 0 && plan.clocks <= most) {
    writer_.RunTest(std::chrono::microseconds(plan.microseconds));
    cost_.AddRunTest(plan.clocks, clocked_hz_);
    return;
  }
  uint64_t clocks = plan.clocks;
  while (clocks > 0) {
    const uint64_t piece = std::min(clocks, most);
    writer_.RunTest(piece);
    cost_.AddRunTest(piece, clocked_hz_);
    clocks -= piece;
  }
}

// The most clocks of one piece of so many. A number of pieces that takes long to write belongs to a
// wait of hours.
uint64_t RecordWriter::ClocksOfPiece(uint64_t clocks) const {
  constexpr uint64_t kMaxPieces = 1000000;
  if (longest_wait_ == 0) {
    return tvb::kMaxCycles;
  }
  const uint64_t wanted = tvb::HzWithin(limit_) * longest_wait_ / kMicrosecondsInSecond;
  return std::min(std::max(wanted, clocks / kMaxPieces + 1), tvb::kMaxCycles);
}

void RecordWriter::SetFrequency(uint32_t limit) {
  limit_ = limit;
  if (begun_) {
    WriteFrequency();
  }
}

void RecordWriter::Finish() {
  Begin();
  folder_.Flush();
  writer_.Finish();
  folder_.Flush();
}

// The player keeps the lengths of header and trailer registers, and the lowest frequency, from one
// file to the next. Lengths left by another file would displace every scan; a frequency left by
// another file would make run-tests too short or too long.
void RecordWriter::Begin() {
  if (begun_) {
    return;
  }
  begun_ = true;
  writer_.ClearPads();
  writer_.Frequency(0);
  WriteFrequency();
}

// The player accepts only a lower frequency, unless a 0 comes before it. At 0 it sets its default
// with the next run-test.
void RecordWriter::WriteFrequency() {
  if (limit_ == written_hz_) {
    return;
  }
  if (writer_.rate().Exact()) {
    writer_.Frequency(0);
  }
  if (limit_ != 0) {
    writer_.Frequency(limit_);
  }
  written_hz_ = limit_;
}

void RecordWriter::Put(tvb::Opcode opcode, const tvb::Shift &scan, uint32_t limit) {
  if (!scan.tdo.empty() && !AnyBit(scan.mask)) {
    tvb::Shift uncompared = scan;
    uncompared.tdo = {};
    uncompared.mask = {};
    return Put(opcode, uncompared, limit);
  }
  writer_.Scan(opcode, scan);
  AccountForScan(opcode, scan, limit);
}

void RecordWriter::AccountForScan(tvb::Opcode opcode, const tvb::Shift &scan, uint32_t limit) {
  ++(opcode == tvb::kSir ? counts_.instruction_scans : counts_.data_scans);
  counts_.bits += scan.bits;
  NoteRate(limit);
  cost_.AddScan(opcode, scan.bits, CountBits(scan.mask), clocked_hz_);
}

void RecordWriter::NoteRate(uint32_t limit) {
  const uint32_t hz = tvb::HzWithin(limit);
  several_rates_ |= clocked_hz_ != 0 && clocked_hz_ != hz;
  clocked_hz_ = hz;
}

}  // namespace tool
