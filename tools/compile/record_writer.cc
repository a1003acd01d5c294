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

// The scan in the form that is written.
tvb::Shift Reduced(tvb::Shift scan) {
  if (!AnyBit(scan.mask)) {
    scan.tdo = {};
    scan.mask = {};
  }
  scan.free_tdo = true;
  return scan;
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
                           RecordFolder::Sink sink)
    : folder_(sink),
      encoder_(blocks),
      writer_(Header(plain), [this](tvb::Bytes record) { HoldBack(record); }),
      cost_(pin_ns) {
  if (!plain) {
    encode_ = std::ref(encoder_);
    writer_.Encode(encode_);
  }
  tvb::Buffer header;
  tvb::AppendHeader(header, Header(plain));
  sink(header);
}

void RecordWriter::Open(const tvb::Shift *first) {
  Begin();
  if (first != nullptr) {
    const tvb::Shift scan = Reduced(*first);
    tvb::Buffer record;
    tvb::AppendRecord(record, tvb::kSir, tvb::ShiftBody(scan, encode_));
    folder_.Put(record);
    AccountForScan(tvb::kSir, scan);
  }
  LetGo();
}

void RecordWriter::Scan(tvb::Opcode opcode, const tvb::Shift &scan) {
  Begin();
  const tvb::Shift reduced = Reduced(scan);
  writer_.Scan(opcode, reduced);
  AccountForScan(opcode, reduced);
}

void RecordWriter::RunTest(uint64_t microseconds, uint64_t clocks) {
  if (clocks == 0) {
    return;
  }
  Begin();
  ++counts_.run_tests;
  NoteRate();
  if (microseconds > 0) {
    writer_.RunTest(std::chrono::microseconds(microseconds));
    cost_.AddRunTest(clocks, hz());
    return;
  }
  while (clocks > 0) {
    const uint64_t piece = std::min(clocks, tvb::kMaxCycles);
    writer_.RunTest(piece);
    cost_.AddRunTest(piece, hz());
    clocks -= piece;
  }
}

void RecordWriter::SetFrequency(uint32_t hz) {
  hz_ = hz;
  if (begun_) {
    WriteFrequency();
  }
}

uint32_t RecordWriter::hz() const {
  return hz_ != 0 ? hz_ : tvb::kDefaultHz;
}

void RecordWriter::Finish() {
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
  if (hz_ == written_hz_) {
    return;
  }
  if (writer_.rate().Exact()) {
    writer_.Frequency(0);
  }
  if (hz_ != 0) {
    writer_.Frequency(hz_);
  }
  written_hz_ = hz_;
}

void RecordWriter::HoldBack(tvb::Bytes record) {
  constexpr size_t kMaxHeldBytes = 1 << 20;
  if (is_open_) {
    folder_.Put(record);
    return;
  }
  tvb::Append(held_bytes_, record);
  held_ends_.push_back(held_bytes_.size());
  if (held_bytes_.size() > kMaxHeldBytes) {
    LetGo();
  }
}

void RecordWriter::LetGo() {
  is_open_ = true;
  size_t start = 0;
  for (size_t end : held_ends_) {
    folder_.Put({held_bytes_.data() + start, end - start});
    start = end;
  }
  held_bytes_ = {};
  held_ends_ = {};
}

void RecordWriter::AccountForScan(tvb::Opcode opcode, const tvb::Shift &scan) {
  ++(opcode == tvb::kSir ? counts_.instruction_scans : counts_.data_scans);
  counts_.bits += scan.bits;
  NoteRate();
  cost_.AddScan(opcode, scan.bits, CountBits(scan.mask), hz());
}

void RecordWriter::NoteRate() {
  several_rates_ |= clocked_hz_ != 0 && clocked_hz_ != hz();
  clocked_hz_ = hz();
}

}  // namespace tool
