// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Which record of the file the driver is playing: its position in the image and the scans on the
// lines tell, the driver itself is not asked.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "tools/rehearse/scan.h"
#include "tvb/bytes.h"
#include "tvb/play_order.h"

namespace tool {

// What the driver shows of itself while it plays.
struct DriverView {
  std::function<uint64_t()> position;  // the next byte of the image that it will read
  std::function<bool()> in_records;    // it has come to the records; what it scans before that is
                                       // its own
};

// Follows the driver through the records. Every SIR and SDR record is one scan.
class Playhead {
 public:
  // The image stays the caller's, as in tvb::PlayOrder; its header has no fault.
  Playhead(tvb::Bytes image, const tvb::HeaderView &header, DriverView driver);

  // A scan begins: the TAP has left Run-Test/Idle. Returns what scan() is from now on.
  const FileScan *BeginScan();

  // The scan that is on the lines or was the last on them; null if it was not one of the file's.
  // It is good until the next one begins.
  const FileScan *scan() const {
    return scan_ ? &*scan_ : nullptr;
  }

  // The TDI data of the last SIR record; its order of bits is told at tvb::Bytes.
  const tvb::Buffer &instruction() const {
    return instruction_;
  }

  // The data of a field of the scan under way, empty if it has none; there must be a scan.
  tvb::Buffer Data(tvb::Tag tag) const {
    return tvb::FieldData(image_, scan_->played.record, tag);
  }

  // Numbers of the file's scans so far, of those that compare (of all, of the DR scans), and of
  // records.
  uint64_t scans() const {
    return scans_;
  }
  uint64_t compared_scans() const {
    return compared_scans_;
  }
  uint64_t compared_dr_scans() const {
    return compared_dr_scans_;
  }
  uint64_t records() const {
    return records_;
  }

  // Goes on to the record that the driver is at while it makes no scan: a run-test.
  void CatchUp();

  // Goes on to the next record in the order of playing; none at the end.
  std::optional<tvb::PlayedRecord> Next();

 private:
  std::optional<tvb::PlayedRecord> GoTo(uint64_t position, bool only_shifts);
  FileScan ScanOf(const tvb::PlayedRecord &played);
  void Count();

  tvb::Bytes image_;
  tvb::PlayOrder order_;
  DriverView driver_;
  std::optional<FileScan> scan_;
  uint64_t scans_ = 0;
  uint64_t compared_scans_ = 0;
  uint64_t compared_dr_scans_ = 0;
  tvb::Buffer instruction_;
  uint64_t records_ = 0;
  uint64_t record_end_ = 0;  // of the record given last
};

}  // namespace tool
