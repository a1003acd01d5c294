// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/playhead.h"

#include <utility>

namespace tool {

Playhead::Playhead(tvb::Bytes image, const tvb::HeaderView &header, DriverView driver,
                   const tvb::Player &player)
    : image_(image), order_(image, header, player), driver_(std::move(driver)) {}

std::optional<tvb::PlayedRecord> Playhead::Next() {
  std::optional<tvb::PlayedRecord> played = order_.Next();
  if (played) {
    records_ = played->step;
  }
  return played;
}

const FileScan *Playhead::BeginScan() {
  scan_.reset();
  if (!driver_.in_records()) {
    return nullptr;
  }
  if (std::optional<tvb::PlayedRecord> played = NextShift(driver_.position())) {
    scan_ = ScanOf(std::move(*played));
    Count();
  }
  return scan();
}

// The driver acts on a record when it has read exactly up to the record's end.
std::optional<tvb::PlayedRecord> Playhead::NextShift(uint64_t end) {
  std::optional<tvb::PlayedRecord> played;
  do {
    played = Next();
  } while (played && !(played->record.IsShift() && played->record.end == end));
  return played;
}

FileScan Playhead::ScanOf(tvb::PlayedRecord played) {
  FileScan scan;
  scan.number = ++scans_;
  scan.played = std::move(played);
  const tvb::RecordView &record = scan.played.record;
  scan.header = order_.pads().header(record.opcode);
  scan.trailer = order_.pads().trailer(record.opcode);
  scan.tdo = tvb::FieldData(image_, record, tvb::kTagTdo);
  scan.mask = tvb::FieldData(image_, record, tvb::kTagMask);
  return scan;
}

void Playhead::Count() {
  const bool compares = scan_->ComparesAny();
  compared_scans_ += compares;
  if (scan_->played.record.opcode == tvb::kSir) {
    instruction_ = Data(tvb::kTagTdi);
  } else {
    compared_dr_scans_ += compares;
  }
}

}  // namespace tool
