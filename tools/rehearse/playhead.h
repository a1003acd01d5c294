// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Tracks which record of the file the driver is playing, from its position in the image and the
// scans on the lines; it does not ask the driver itself.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "tools/rehearse/scan.h"
#include "tvb/bytes.h"
#include "tvb/play_order.h"

namespace tool {

// The driver's visible state while it plays.
struct DriverView {
  std::function<uint64_t()> position;  // the next byte of the image that it will read
  std::function<bool()> in_records;    // it has come to the records; what it scans before that is
                                       // its own
};

// Follows the driver through the records. Every SIR and SDR record is one scan. Only scans move it,
// and Next(): it is the same whoever looks at it, and when.
class Playhead {
 public:
  // The caller owns the image, as in tvb::PlayOrder; its header is valid. `player`: as earlier
  // files have left it.
  Playhead(tvb::Bytes image, const tvb::HeaderView &header, DriverView driver,
           const tvb::Player &player = {});

  // A scan begins: the TAP has left Run-Test/Idle. Returns the new value of scan().
  const FileScan *BeginScan();

  // The current scan on the lines, or the last one; null if it is not one of the file's. Valid
  // until the next scan begins.
  const FileScan *scan() const {
    return scan_ ? &*scan_ : nullptr;
  }

  // The TDI data of the last SIR record; see tvb::Bytes for the bit order.
  const tvb::Buffer &instruction() const {
    return instruction_;
  }

  // The data of a field of the current scan, empty if the field is absent; there must be a scan.
  tvb::Buffer Data(tvb::Tag tag) const {
    return tvb::FieldData(image_, scan_->played.record, tag);
  }

  // Counts so far: the file's scans, the scans that compare (all, and DR scans only), and the
  // records to the last one of Next() or the last scan.
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

  // The player after the last record of Next().
  const tvb::Player &player() const {
    return order_.player();
  }

  // Moves to the next record in playing order; none at the end.
  std::optional<tvb::PlayedRecord> Next();

 private:
  std::optional<tvb::PlayedRecord> NextShift(uint64_t end);
  FileScan ScanOf(tvb::PlayedRecord played);
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
};

}  // namespace tool
