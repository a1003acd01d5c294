// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// When the records of a file are played, and the last changes of the lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/playhead.h"
#include "tools/report/data.h"
#include "tvb/bytes.h"
#include "tvb/play_order.h"

namespace tool {

// The row of a record that has not been played, and is in no loop.
ReportRecord ListRecord(tvb::Bytes image, const tvb::RecordView &record, ReportTexts &texts);

// The rows of a file, one a record in file order, none of which has been played. At most
// `max_records` rows; returns the number of further records.
uint64_t ListRecords(tvb::Bytes image, const tvb::HeaderView &header, uint64_t max_records,
                     std::vector<ReportRecord> &rows, ReportTexts &texts);

// Follows a download on the lines and enters into the rows of its file when each record is played.
// A scan's time is the lines' own. Between two scans the lines do not tell records apart: there the
// run-tests take, one after the other, the time that the player's rules give them.
class Timeline {
 public:
  // `rows` as ListRecords() makes them; what the driver does by itself is added at their front by
  // Finish(). `player`: as earlier files have left it. `playhead` follows the same download. All
  // outlive the timeline.
  Timeline(tvb::Bytes image, const tvb::HeaderView &header, const tvb::Player &player,
           const Playhead &playhead, double call_time, uint64_t begin,
           std::vector<ReportRecord> &rows);

  void Add(const LineChange &change);

  // The download has ended at `end`, after the driver has read up to `position`. `done`: it played
  // all of the file.
  void Finish(uint64_t end, uint64_t position, bool done);

  const ReportSpent &spent() const {
    return spent_;
  }

  // When the scan began in which the download stopped; its end if there is none.
  uint64_t stopped_since() const {
    return stopped_since_;
  }

 private:
  void BeginScan(uint64_t time);
  void EndScan(uint64_t time);
  void EndOwn(uint64_t time);
  void WalkTo(uint64_t step, uint64_t time);
  void WalkRest(uint64_t end, uint64_t position, bool done);
  void Spend(const tvb::PlayedRecord &played, uint64_t end);
  void BeginRow(const tvb::PlayedRecord &played);
  void EndRow(const tvb::PlayedRecord &played);
  void EndScanRow(uint64_t end);
  uint64_t ClockingOf(const tvb::PlayedRecord &played) const;
  uint64_t WaitOf(const tvb::PlayedRecord &played) const;
  ReportRecord *RowOf(uint64_t record);

  tvb::PlayOrder order_;
  const Playhead &playhead_;
  double call_time_;
  ReportSpent spent_;
  uint64_t stopped_since_ = 0;
  uint64_t now_;  // up to here the records so far take
  std::vector<ReportRecord> &rows_;
  std::vector<ReportRecord> own_;
  std::optional<tvb::PlayedRecord> scanned_;  // the record whose scan is on the lines
  bool idle_ = false;
  ReportKind own_kind_ = ReportKind::kReset;
};

// Keeps the last changes of the lines. Add() is called at every edge, so it only stores.
class LastChanges {
 public:
  void Add(const LineChange &change) {
    kept_[added_++ % kKept] = change;
  }

  // The last ones up to `end`. `lines` have the levels after them.
  ReportWave Wave(const Lines &lines, uint64_t end) const;

 private:
  static constexpr size_t kKept = 256;
  static constexpr size_t kShown = 200;  // fewer: the one before them tells the TAP's state

  uint64_t added_ = 0;
  std::array<LineChange, kKept> kept_;
};

}  // namespace tool
