// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/record_writer.h"

#include <algorithm>
#include <bit>

#include "tvb/header.h"
#include "tvb/number.h"
#include "tvb/player.h"
#include "tvb/record.h"

namespace tool {
namespace {

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

RecordWriter::RecordWriter(bool plain, const tvb::BlockChoice &blocks, double pin_ns,
                           RecordFolder::Sink sink)
    : sink_(std::move(sink)), folder_(sink_), encoder_(plain, blocks), cost_(pin_ns) {
  tvb::Buffer header;
  tvb::AppendHeader(header, plain ? tvb::FileHeader::Plain() : tvb::FileHeader());
  sink_(header);
}

void RecordWriter::Settle(const ScanData *opening) {
  Begin();
  settled_ = true;
  if (opening != nullptr) {
    Scan(true, *opening);
  }
  size_t start = 0;
  for (size_t end : early_ends_) {
    folder_.Put({early_bytes_.data() + start, end - start});
    start = end;
  }
  early_bytes_.clear();
  early_ends_.clear();
}

void RecordWriter::Finish() {
  folder_.Flush();
  Put(tvb::kRunTest, tvb::IdleRunTestBody());
  folder_.Flush();
}

void RecordWriter::SetFrequency(uint32_t hz) {
  hz_ = hz;
  if (begun_) {
    TellFrequency();
  }
}

uint32_t RecordWriter::hz() const {
  return hz_ != 0 ? hz_ : tvb::kDefaultHz;
}

// The player keeps the lengths of header and trailer registers from one file to the next, and the
// lowest frequency. Lengths that another file has left would displace every scan; a frequency that
// another has left would make run-tests too short or too long.
void RecordWriter::Begin() {
  if (begun_) {
    return;
  }
  begun_ = true;
  for (tvb::Opcode pad : {tvb::kHir, tvb::kTir, tvb::kHdr, tvb::kTdr}) {
    Put(pad, tvb::PadBody(0, {}));
  }
  Put(tvb::kFrequency, tvb::NumberBody(0));
  TellFrequency();
}

void RecordWriter::Scan(bool instruction, const ScanData &data) {
  Begin();
  const bool compares = data.compares && AnyBit(data.mask);
  body_.clear();
  tvb::AppendNumber(body_, data.bits);
  body_.push_back(tvb::kTagTdi);
  if (data.has_free_bits) {
    encoder_.AppendFree(body_, data.bits, data.tdi, data.smask);
  } else {
    encoder_.Append(body_, data.tdi);
  }
  if (compares) {
    body_.push_back(tvb::kTagTdo);
    encoder_.AppendFree(body_, data.bits, data.tdo, data.mask);
    body_.push_back(tvb::kTagMask);
    encoder_.Append(body_, data.mask);
  }
  body_.push_back(tvb::kTagEnd);
  const tvb::Opcode opcode = instruction ? tvb::kSir : tvb::kSdr;
  Put(opcode, body_);

  ++(instruction ? counts_.instruction_scans : counts_.data_scans);
  counts_.bits += data.bits;
  NoteRate();
  cost_.AddScan(opcode, data.bits, compares ? CountBits(data.mask) : 0, hz());
}

void RecordWriter::RunTest(uint64_t microseconds, uint64_t clocks) {
  if (clocks == 0) {
    return;
  }
  Begin();
  ++counts_.run_tests;
  NoteRate();
  players_hz_ = hz();
  if (microseconds > 0) {
    Put(tvb::kRunTest, tvb::RunTestBody(microseconds, 0, tvb::IsWholeKilohertz(hz())));
    cost_.AddRunTest(clocks, hz());
    return;
  }
  while (clocks > 0) {
    const uint64_t piece = std::min(clocks, tvb::kMaxCycles);
    Put(tvb::kRunTest, tvb::RunTestBody(0, piece, false));
    cost_.AddRunTest(piece, hz());
    clocks -= piece;
  }
}

// The player takes a lower frequency only, unless it is told 0 before, which makes it forget. At 0
// it sets its own with the next run-test.
void RecordWriter::TellFrequency() {
  if (hz_ == told_hz_) {
    return;
  }
  if (players_hz_ != 0) {
    Put(tvb::kFrequency, tvb::NumberBody(0));
  }
  if (hz_ != 0) {
    Put(tvb::kFrequency, tvb::NumberBody(hz_));
  }
  told_hz_ = hz_;
  players_hz_ = hz_;
}

void RecordWriter::Put(uint8_t opcode, const tvb::Buffer &body) {
  constexpr size_t kMostEarlyBytes = 1 << 20;
  if (settled_) {
    record_.clear();
    tvb::AppendRecord(record_, opcode, body);
    folder_.Put(record_);
    return;
  }
  tvb::AppendRecord(early_bytes_, opcode, body);
  early_ends_.push_back(early_bytes_.size());
  if (early_bytes_.size() > kMostEarlyBytes) {
    Settle(nullptr);
  }
}

void RecordWriter::NoteRate() {
  several_rates_ |= clocked_hz_ != 0 && clocked_hz_ != hz();
  clocked_hz_ = hz();
}

}  // namespace tool
