// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/play_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tools/cli/text.h"
#include "tools/rehearse/verdict.h"

namespace tool {
namespace {

constexpr size_t kShownRowBits = 64;
constexpr size_t kMaxShownRows = 64;

ReportVerdict VerdictOf(const Playhead &playhead, int code) {
  if (code != kDone) {
    return ReportVerdict::kFailed;
  }
  return playhead.compared_scans() == 0 ? ReportVerdict::kNothingCompared : ReportVerdict::kHeld;
}

// That of several files: the worst, and something compared in any of them is something compared.
const ReportFile &Decisive(const std::vector<ReportFile> &files) {
  for (const ReportVerdict verdict : {ReportVerdict::kFailed, ReportVerdict::kHeld}) {
    const auto found = std::find_if(files.begin(), files.end(), [verdict](const ReportFile &file) {
      return file.verdict == verdict;
    });
    if (found != files.end()) {
      return *found;
    }
  }
  return files.front();
}

std::string WithoutLineEnd(std::string text) {
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  return text;
}

ReportBits BitsAt(const Mismatch &mismatch, size_t first) {
  const size_t count = std::min(kShownRowBits, mismatch.mask.size() - first);
  return {first, count, mismatch.expected.Hex(first, count), mismatch.read.Hex(first, count),
          mismatch.mask.Hex(first, count)};
}

bool Differs(const BitRow &differences, size_t first) {
  const size_t end = std::min(first + kShownRowBits, differences.size());
  for (size_t bit = first; bit < end; ++bit) {
    if (differences[bit]) {
      return true;
    }
  }
  return false;
}

BitRow Differences(const Mismatch &mismatch) {
  return (mismatch.expected ^ mismatch.read) & mismatch.mask;
}

// Each record gets the line of the first statement that gave bits to it.
void SetLines(const std::vector<SourcePiece> &pieces, std::vector<ReportRecord> &records) {
  for (const SourcePiece &piece : pieces) {
    const auto row = std::ranges::lower_bound(records, piece.record, {}, &ReportRecord::record);
    if (row != records.end() && row->record == piece.record && row->line == 0) {
      row->line = piece.line;
    }
  }
}

}  // namespace

std::vector<ReportBits> FailedBits(const Mismatch &mismatch) {
  const bool whole = mismatch.mask.size() <= kShownRowBits * kMaxShownRows;
  const BitRow differences = Differences(mismatch);
  std::vector<ReportBits> rows;
  for (size_t first = 0; first < mismatch.mask.size() && rows.size() < kMaxShownRows;
       first += kShownRowBits) {
    if (whole || Differs(differences, first)) {
      rows.push_back(BitsAt(mismatch, first));
    }
  }
  return rows;
}

PlayReport::PlayReport(std::string target, double pin_ns)
    : pin_ns_(pin_ns),
      messages_([this](std::string_view kind, std::string_view place, std::string_view text) {
        data_.messages.push_back({std::string(kind), std::string(place), std::string(text)});
      }) {
  data_.title = "Rehearsal";
  data_.target = std::move(target);
  data_.clocking = fmt::format("on a board, at {} ns a pin call", RealText(pin_ns));
}

DriverLog::Sink PlayReport::TakeLog(DriverLog::Sink sink) {
  return [this, sink = std::move(sink)](uint64_t time, std::string_view message) {
    data_.log.push_back({time, std::string(message)});
    sink(time, message);
  };
}

void PlayReport::Begin(const PlayedFile &file, Rehearsal &rehearsal) {
  file_ = file;
  ReportFile &shown = AddFile(file);
  shown.begin = rehearsal.clock().now();
  waits_before_ = rehearsal.clock().waits();
  waited_before_ = rehearsal.clock().waited();
  timeline_.emplace(file.image, file.header, rehearsal.playhead().player(), rehearsal.playhead(),
                    pin_ns_, shown.begin, shown.records);
  Watch(rehearsal);
}

void PlayReport::Watch(Rehearsal &rehearsal) {
  if (std::exchange(watches_, true)) {
    return;
  }
  rehearsal.WatchChanges([this](const LineChange &change) {
    timeline_->Add(change);
    last_changes_.Add(change);
  });
}

ReportFile &PlayReport::AddFile(const PlayedFile &file) {
  // The timeline of the file before has ended, so its rows may move.
  ReportFile &shown = data_.files.emplace_back();
  shown.name = file.name;
  shown.size = file.image.size();
  shown.words = "not played";
  shown.unlisted =
      ListRecords(file.image, file.header, kMaxReportRecords - listed_, shown.records, data_.texts);
  listed_ += shown.records.size();
  if (file.input != nullptr && file.input->seal) {
    shown.seal = tvb::SealText(*file.input->seal);
  }
  if (file.input != nullptr && file.input->map != nullptr) {
    SetLines(file.input->map->pieces, shown.records);
  }
  return shown;
}

void PlayReport::End(Rehearsal &rehearsal, int code) {
  ReportFile &shown = data_.files.back();
  const BoardClock &clock = rehearsal.clock();
  shown.end = clock.now();
  timeline_->Finish(shown.end, rehearsal.result().position, rehearsal.result().done);
  shown.spent = timeline_->spent();
  if (rehearsal.mismatch()) {
    AddFailure(*rehearsal.mismatch(), rehearsal.lines());
  }
  shown.verdict = VerdictOf(rehearsal.playhead(), code);
  shown.words = VerdictWords(rehearsal, code);
  shown.summary = WithoutLineEnd(Summary(rehearsal, code));
  shown.figures = TimeFigures(rehearsal.counts(), clock.waits() - waits_before_,
                              clock.waited() - waited_before_, pin_ns_);
}

void PlayReport::Skip(const PlayedFile &file) {
  AddFile(file);
}

void PlayReport::AddFailure(const Mismatch &mismatch, const Lines &lines) {
  const uint64_t end = data_.files.back().end;
  ReportFailure &failure = data_.files.back().failure.emplace();
  failure.place = fmt::format("offset 0x{:X} (record {})", mismatch.offset, mismatch.record);
  failure.sentence = MismatchSentence(mismatch);
  failure.detail = WithoutLineEnd(MismatchDetail(mismatch));
  failure.record = mismatch.record;
  failure.scan = mismatch.scan;
  failure.bit = mismatch.bit;
  failure.bits = mismatch.mask.size();
  failure.header = mismatch.header;
  failure.loop = mismatch.loop;
  failure.pass = mismatch.pass;
  failure.begin = timeline_->stopped_since();
  failure.end = end;
  failure.compared = mismatch.mask.Ones();
  failure.differ = Differences(mismatch).Ones();
  failure.rows = FailedBits(mismatch);
  AddSource(mismatch, failure);
  failure.wave = last_changes_.Wave(lines, end);
  ListFailed(mismatch, end);
}

void PlayReport::AddSource(const Mismatch &mismatch, ReportFailure &failure) const {
  const auto place =
      file_.input == nullptr ? std::nullopt : file_.input->Find(mismatch.scan, mismatch.bit);
  if (!place) {
    return;
  }
  const std::string statement = file_.input->Statement(*place);
  failure.sentence = MismatchSentence(mismatch, *place);
  failure.source = {file_.input->source->map.source, place->line, place->column,
                    statement.empty() ? std::string(place->statement) : statement};
}

// The record that failed is listed even where the list ends before it.
void PlayReport::ListFailed(const Mismatch &mismatch, uint64_t end) {
  std::vector<ReportRecord> &rows = data_.files.back().records;
  if (!rows.empty() && rows.back().record >= mismatch.record) {
    return;
  }
  tvb::Reader reader(file_.image, file_.header);
  reader.MoveTo(mismatch.offset);
  if (const std::optional<tvb::RecordView> record = reader.Next()) {
    ReportRecord &row = rows.emplace_back(ListRecord(file_.image, *record, data_.texts));
    row.record = mismatch.record;
    row.scan = mismatch.scan;
    row.loop = mismatch.loop;
    row.begin = timeline_->stopped_since();
    row.time = end - *row.begin;
    --data_.files.back().unlisted;
  }
}

const ReportData &PlayReport::Finish(const Rehearsal &rehearsal) {
  const ReportFile &decisive = Decisive(data_.files);
  data_.verdict = decisive.verdict;
  data_.words = decisive.words;
  data_.figures = TimeFigures(rehearsal.all_counts(), rehearsal.clock().waits(),
                              rehearsal.clock().waited(), pin_ns_);
  return data_;
}

}  // namespace tool
