// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/playhead.h"

#include <algorithm>
#include <utility>

namespace tool {
namespace {

bool BitOf(const tvb::Buffer &bytes, uint32_t bit) {
  return bytes[bit / 8] >> (7 - bit % 8) & 1;
}

}  // namespace

std::optional<uint32_t> FileScan::OwnBit(uint64_t bit) const {
  if (bit < header || bit - header >= bits()) {
    return std::nullopt;
  }
  return static_cast<uint32_t>(bit - header);
}

bool FileScan::Compares(uint32_t bit) const {
  return !mask.empty() && BitOf(mask, bit);
}

bool FileScan::Expected(uint32_t bit) const {
  return !tdo.empty() && BitOf(tdo, bit);
}

bool FileScan::ComparesAny() const {
  for (uint32_t bit = 0; bit < bits(); ++bit) {
    if (Compares(bit)) {
      return true;
    }
  }
  return false;
}

Playhead::Playhead(tvb::Bytes image, const tvb::HeaderView &header, DriverView driver)
    : image_(image), order_(image, header), driver_(std::move(driver)) {}

void Playhead::Entered(TapState state) {
  if (state == TapState::kSelectDrScan && state_ == TapState::kRunTestIdle) {
    BeginScan();
  }
  state_ = state;
}

std::optional<tvb::PlayedRecord> Playhead::Skip() {
  std::optional<tvb::PlayedRecord> played = order_.Next();
  if (played) {
    records_ = played->step;
    record_end_ = played->record.end;
  }
  return played;
}

void Playhead::CatchUp() {
  const uint64_t position = driver_.position();
  if (driver_.in_records() && position != record_end_) {
    GoTo(position, false);
  }
}

void Playhead::BeginScan() {
  scan_.reset();
  if (!driver_.in_records()) {
    return;
  }
  if (const std::optional<tvb::PlayedRecord> played = GoTo(driver_.position(), true)) {
    Load(*played);
  }
}

// The driver acts on a record when it has read all of it and nothing more.
std::optional<tvb::PlayedRecord> Playhead::GoTo(uint64_t position, bool only_shifts) {
  std::optional<tvb::PlayedRecord> played;
  do {
    played = Skip();
  } while (played &&
           (played->record.end != position || (only_shifts && !played->record.IsShift())));
  return played;
}

void Playhead::Load(const tvb::PlayedRecord &played) {
  FileScan scan;
  scan.number = ++scans_;
  scan.played = played;
  scan.header = order_.pads().header(played.record.opcode);
  scan.trailer = order_.pads().trailer(played.record.opcode);
  scan_ = std::move(scan);
  scan_->tdo = Data(tvb::kTagTdo);
  scan_->mask = Data(tvb::kTagMask);
  Count();
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
