// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/verdict.h"

#include <fmt/format.h>

#include <cstdio>
#include <optional>

#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tvb/player.h"
#include "tvb/text.h"

namespace tool {
namespace {

class Verdict {
 public:
  Verdict(Rehearsal &rehearsal, const PlayInput &input)
      : rehearsal_(rehearsal), input_(input), file_(*input.file) {}

  // Reports the verdict and returns the exit code.
  int Tell() {
    const DriverResult &result = rehearsal_.result();
    if (result.stop == DriverStop::kMismatch) {
      TellMismatch();
      return kFailed;
    }
    if (result.stop == DriverStop::kNoMemory) {
      TellNoMemory();
      return kFailed;
    }
    if (!result.done) {
      return TellOtherError();
    }
    TellRest();
    return kDone;
  }

 private:
  void TellMismatch() {
    const std::optional<Mismatch> &mismatch = rehearsal_.mismatch();
    if (!mismatch) {
      Error(file_.Where(rehearsal_.result().position),
            "a comparison failed in a scan before this place");
      return;
    }
    const std::string place = file_.Where(mismatch->offset, mismatch->record);
    if (const auto source = input_.Find(mismatch->scan, mismatch->bit)) {
      Error(source->where, MismatchSentence(*mismatch, *source));
      fmt::print(stderr, "{}", SourceDetail(*mismatch, input_.Statement(*source), place));
    } else {
      Error(place, MismatchSentence(*mismatch));
    }
    fmt::print(stderr, "{}", MismatchDetail(*mismatch));
    if (rehearsal_.result().done) {
      Note(place,
           "on a board this passes for a good download: the driver looks at a comparison when the "
           "next record starts, and none follows; end the file with a harmless record");
    }
  }

  void TellNoMemory() {
    const std::optional<tvb::PlayedRecord> played = NextShift();
    if (!played) {
      Error(file_.name(), "the driver ran out of memory");
      return;
    }
    Error(file_.Where(played->record.offset, played->record.index),
          fmt::format("the driver cannot hold a scan of {} bits: with header, trailer and the way "
                      "there and back it may take {} clocks",
                      NumberText(played->record.bits()), NumberText(tvb::kMaxScanClocks)));
  }

  int TellOtherError() {
    while (const std::optional<tvb::PlayedRecord> played = rehearsal_.playhead().Next()) {
      const tvb::RecordView &record = played->record;
      if (record.fault) {
        Error(file_.Where(record.fault->offset, record.index), record.fault->message);
        return kBad;
      }
      if (record.IsPad() && record.end >= rehearsal_.result().position) {
        Error(
            file_.Where(record.offset, record.index),
            fmt::format("the driver cannot hold a register of {} bits", NumberText(record.bits())));
        return kFailed;
      }
    }
    Error(file_.Where(rehearsal_.result().position), "the driver stopped before this place");
    return kFailed;
  }

  // The file was played: check whether more of it follows.
  void TellRest() {
    while (rehearsal_.playhead().Next()) {
    }
    const uint64_t position = rehearsal_.result().position;
    if (position < file_.image().size()) {
      Warning(file_.Where(position - 1),
              fmt::format("the driver ends here, since {} is not the '^' of a record: {} bytes are "
                          "not played",
                          tvb::Hex(file_.image()[position - 1]),
                          NumberText(file_.image().size() - position + 1)));
    }
  }

  std::optional<tvb::PlayedRecord> NextShift() {
    std::optional<tvb::PlayedRecord> played;
    do {
      played = rehearsal_.playhead().Next();
    } while (played && !played->record.IsShift());
    return played;
  }

  Rehearsal &rehearsal_;
  const PlayInput &input_;
  const TvbFile &file_;
};

ReportFigure Count(const char *label, uint64_t number, const std::string &detail) {
  return {label, number, NumberText(number), detail};
}

ReportFigure Time(const char *label, uint64_t nanoseconds) {
  return {label, nanoseconds, TimeText(nanoseconds), ""};
}

std::string CallDetail(const LineCounts &counts) {
  return fmt::format("TCK {}, TMS {}, TDI {}, TDO {}", NumberText(counts.writes[0]),
                     NumberText(counts.writes[1]), NumberText(counts.writes[2]),
                     NumberText(counts.all_reads()));
}

std::string ClockDetail(const LineCounts &counts) {
  const uint64_t ir = counts.clocks_in(svf::TapState::kIrShift);
  const uint64_t dr = counts.clocks_in(svf::TapState::kDrShift);
  const uint64_t idle = counts.clocks_in(svf::TapState::kIdle);
  return fmt::format("Shift-IR {}, Shift-DR {}, Run-Test/Idle {}, on the way {}", NumberText(ir),
                     NumberText(dr), NumberText(idle),
                     NumberText(counts.all_clocks() - ir - dr - idle));
}

}  // namespace

int TellVerdict(Rehearsal &rehearsal, const PlayInput &input) {
  return Verdict(rehearsal, input).Tell();
}

const char *VerdictWords(const Rehearsal &rehearsal, int code) {
  return code != kDone                                ? "failed"
         : rehearsal.playhead().compared_scans() == 0 ? "done, nothing is compared"
                                                      : "done, every comparison held";
}

std::string Summary(Rehearsal &rehearsal, int code) {
  const Playhead &playhead = rehearsal.playhead();
  return fmt::format("{}, {} ({} compared), {}: {}\n", CountText(playhead.records(), "record"),
                     CountText(playhead.scans(), "scan"), NumberText(playhead.compared_scans()),
                     CountText(rehearsal.counts().all_clocks(), "clock"),
                     VerdictWords(rehearsal, code));
}

std::vector<ReportFigure> TimeFigures(const LineCounts &counts, uint64_t waits, uint64_t waited,
                                      double call_time) {
  const uint64_t calls = counts.calls();
  const auto clocking = static_cast<uint64_t>(static_cast<double>(calls) * call_time);
  return {Count("pin calls", calls, CallDetail(counts)),
          Count("clocks", counts.all_clocks(), ClockDetail(counts)),
          Count("waits", waits, "of 100 us, after run-tests that were clocked too fast"),
          Time("clocking", clocking),
          Time("waiting", waited),
          Time("whole", clocking + waited)};
}

std::string TimeTable(const LineCounts &counts, const BoardClock &clock, double call_time) {
  std::string table = fmt::format("on a board, at {} ns a pin call:\n", RealText(call_time));
  for (const ReportFigure &figure : TimeFigures(counts, clock.waits(), clock.waited(), call_time)) {
    const std::string detail = figure.detail.empty() ? "" : "  " + figure.detail;
    table += fmt::format("  {:<11}{:>15}{}\n", figure.label, figure.text, detail);
  }
  return table;
}

}  // namespace tool
