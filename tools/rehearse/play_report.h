// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Gathers what the page of a rehearsal shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/cli/report.h"
#include "tools/rehearse/play_input.h"
#include "tools/rehearse/rehearsal.h"
#include "tools/rehearse/timeline.h"
#include "tools/report/data.h"
#include "tvb/bytes.h"
#include "tvb/header.h"

namespace tool {

// A file as it is known before it is played. The caller owns the image.
struct PlayedFile {
  std::string name;
  tvb::Bytes image;
  tvb::HeaderView header;
  const PlayInput *input = nullptr;  // knows where its scans come from; null: nobody does
};

// Watches a rehearsal from before its first run. Messages that are printed meanwhile are taken in.
class PlayReport {
 public:
  // `target`: what answers on TDO, for people.
  PlayReport(std::string target, double pin_ns);

  // A sink that also passes on to `sink`. Both live as long as the report.
  DriverLog::Sink TakeLog(DriverLog::Sink sink);

  // The rehearsal is about to run that file; then it has, with that exit code.
  void Begin(const PlayedFile &file, Rehearsal &rehearsal);
  void End(Rehearsal &rehearsal, int code);

  // The file was not played, since one before it failed.
  void Skip(const PlayedFile &file);

  // After the last file.
  const ReportData &Finish(const Rehearsal &rehearsal);

 private:
  ReportFile &AddFile(const PlayedFile &file);
  void Watch(Rehearsal &rehearsal);
  void AddFailure(const Mismatch &mismatch, const Lines &lines);
  void AddSource(const Mismatch &mismatch, ReportFailure &failure) const;
  void ListFailed(const Mismatch &mismatch, uint64_t end);

  double pin_ns_;
  ReportData data_;
  MessageListener messages_;
  uint64_t listed_ = 0;
  bool watches_ = false;
  PlayedFile file_;  // the one that is played
  uint64_t waits_before_ = 0;
  uint64_t waited_before_ = 0;
  std::optional<Timeline> timeline_;
  LastChanges last_changes_;
};

// The rows of a failed scan that a page shows: all, or of a long one the first that differ.
std::vector<ReportBits> FailedBits(const Mismatch &mismatch);

}  // namespace tool
