// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/play_verdict.h"

#include <fmt/format.h>

#include <cstdio>
#include <optional>

#include "tools/cli/command.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tvb/text.h"

namespace tool {
namespace {

// Characters of the driver's vector, which are the clocks of a scan.
constexpr uint64_t kMostScanClocks = (4u << 20) - 1;

class Verdict {
 public:
  Verdict(Rehearsal &rehearsal, const TvbFile &file) : rehearsal_(rehearsal), file_(file) {}

  // Reports it and returns the exit code.
  int Tell() {
    if (rehearsal_.result().mismatch) {
      TellMismatch();
      return kFailed;
    }
    switch (rehearsal_.result().end) {
      case DriverEnd::kNoMemory:
        return TellNoMemory();
      case DriverEnd::kOtherError:
        return TellOtherError();
      default:
        TellRest();
        return kDone;
    }
  }

 private:
  void TellMismatch() {
    const std::optional<Mismatch> &mismatch = rehearsal_.mismatch();
    if (!mismatch) {
      Error(file_.Place(rehearsal_.result().position),
            "a comparison failed in a scan before this place");
      return;
    }
    Error(file_.Place(mismatch->offset, mismatch->record), MismatchSentence(*mismatch));
    fputs(MismatchDetail(*mismatch).c_str(), stderr);
    if (rehearsal_.result().end == DriverEnd::kDone) {
      Note(file_.Place(mismatch->offset, mismatch->record),
           "on a board this passes for a good download: the driver looks at a comparison when the "
           "next record starts, and none follows; end the file with a harmless record");
    }
  }

  int TellNoMemory() {
    const std::optional<tvb::PlayedRecord> played = NextShift();
    if (!played) {
      Error(file_.name(), "the driver ran out of memory");
      return kFailed;
    }
    Error(file_.Place(played->record.offset, played->record.index),
          fmt::format("the driver cannot hold a scan of {} bits: with header, trailer and the way "
                      "there and back it may take {} clocks",
                      NumberText(played->record.bits()), NumberText(kMostScanClocks)));
    return kFailed;
  }

  int TellOtherError() {
    while (const std::optional<tvb::PlayedRecord> played = rehearsal_.playhead().Skip()) {
      const tvb::RecordView &record = played->record;
      if (record.fault) {
        Error(file_.Place(record.fault->offset, record.index), record.fault->message);
        return kBad;
      }
      if (record.IsPad() && record.end >= rehearsal_.result().position) {
        Error(
            file_.Place(record.offset, record.index),
            fmt::format("the driver cannot hold a register of {} bits", NumberText(record.bits())));
        return kFailed;
      }
    }
    Error(file_.Place(rehearsal_.result().position), "the driver stopped before this place");
    return kFailed;
  }

  // The file was played: is there more of it?
  void TellRest() {
    while (rehearsal_.playhead().Skip()) {
    }
    const uint64_t position = rehearsal_.result().position;
    if (position < file_.image().size()) {
      Warning(file_.Place(position - 1),
              fmt::format("the driver ends here, since {} is not the '^' of a record: {} bytes are "
                          "not played",
                          tvb::Hex(file_.image()[position - 1]),
                          NumberText(file_.image().size() - position + 1)));
    }
  }

  std::optional<tvb::PlayedRecord> NextShift() {
    std::optional<tvb::PlayedRecord> played;
    do {
      played = rehearsal_.playhead().Skip();
    } while (played && !played->record.IsShift());
    return played;
  }

  Rehearsal &rehearsal_;
  const TvbFile &file_;
};

}  // namespace

int TellVerdict(Rehearsal &rehearsal, const TvbFile &file) {
  return Verdict(rehearsal, file).Tell();
}

}  // namespace tool
