// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/timeline.h"

#include <algorithm>
#include <bit>

#include "tvb/player.h"

namespace tool {
namespace {

ReportKind KindOf(uint8_t opcode) {
  switch (opcode) {
    case tvb::kSir:
      return ReportKind::kSir;
    case tvb::kSdr:
      return ReportKind::kSdr;
    case tvb::kRunTest:
      return ReportKind::kRunTest;
    case tvb::kHir:
      return ReportKind::kHir;
    case tvb::kHdr:
      return ReportKind::kHdr;
    case tvb::kTir:
      return ReportKind::kTir;
    case tvb::kTdr:
      return ReportKind::kTdr;
    case tvb::kFrequency:
      return ReportKind::kFrequency;
    case tvb::kLoop:
      return ReportKind::kLoop;
    case tvb::kEndLoop:
      return ReportKind::kEndLoop;
    default:
      return ReportKind::kOther;
  }
}

uint64_t OnesOf(const tvb::Buffer &bytes, uint32_t bits) {
  uint64_t ones = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const unsigned unused = 8 * (i + 1) > bits ? 8 * (i + 1) - bits : 0;
    ones += static_cast<uint64_t>(std::popcount(static_cast<uint8_t>(bytes[i] >> unused)));
  }
  return ones;
}

// A register that the player cannot hold is not shown.
bool HasData(const tvb::RecordView &record) {
  return (record.IsShift() || record.IsPad()) && record.bits() <= tvb::kMaxScanClocks;
}

void AddData(tvb::Bytes image, const tvb::RecordView &record, ReportRecord &row,
             ReportTexts &texts) {
  const auto text = [&](tvb::Tag tag) {
    const tvb::Buffer data = tvb::FieldData(image, record, tag);
    return data.empty() ? 0 : texts.Add(AbbreviatedHex(data, record.bits()));
  };
  row.tdi = text(tvb::kTagTdi);
  row.tdo = text(tvb::kTagTdo);
  row.mask = text(tvb::kTagMask);
  if (record.IsShift() && row.mask != 0) {
    row.compared = OnesOf(tvb::FieldData(image, record, tvb::kTagMask), record.bits());
  }
}

}  // namespace

ReportRecord ListRecord(tvb::Bytes image, const tvb::RecordView &record, ReportTexts &texts) {
  ReportRecord row;
  row.kind = KindOf(record.opcode);
  row.record = record.index;
  row.offset = record.offset;
  row.size = std::min<uint64_t>(record.end, image.size()) - record.offset;
  row.value = record.bits();
  if (!record.fault && HasData(record)) {
    AddData(image, record, row, texts);
  }
  return row;
}

uint64_t ListRecords(tvb::Bytes image, const tvb::HeaderView &header, uint64_t max_records,
                     std::vector<ReportRecord> &rows, ReportTexts &texts) {
  tvb::Reader reader(image, header);
  uint64_t loop = 0;
  uint64_t unlisted = 0;
  while (const std::optional<tvb::RecordView> record = reader.Next()) {
    if (rows.size() >= max_records) {
      ++unlisted;
      continue;
    }
    loop = record->opcode == tvb::kEndLoop ? 0 : loop;
    rows.push_back(ListRecord(image, *record, texts));
    rows.back().loop = record->opcode == tvb::kLoop ? 0 : loop;
    loop = record->opcode == tvb::kLoop ? record->index : loop;
  }
  return unlisted;
}

Timeline::Timeline(tvb::Bytes image, const tvb::HeaderView &header, const tvb::Player &player,
                   const Playhead &playhead, double call_time, uint64_t begin,
                   std::vector<ReportRecord> &rows)
    : order_(image, header, player),
      playhead_(playhead),
      call_time_(call_time),
      now_(begin),
      rows_(rows) {}

void Timeline::Add(const LineChange &change) {
  if (!change.entered) {
    return;
  }
  const bool was_idle = idle_;
  idle_ = change.state == svf::TapState::kIdle;
  if (was_idle) {
    BeginScan(change.time);
  } else if (idle_) {
    EndScan(change.time);
  } else if (change.state == svf::TapState::kIrCapture) {
    own_kind_ = ReportKind::kOwnIr;
  } else if (change.state == svf::TapState::kDrCapture) {
    own_kind_ = ReportKind::kOwnDr;
  } else if (change.state == svf::TapState::kReset) {
    own_kind_ = ReportKind::kReset;
  }
}

void Timeline::BeginScan(uint64_t time) {
  const FileScan *scan = playhead_.scan();
  if (scan == nullptr) {
    return;
  }
  WalkTo(scan->played.step, time);
  now_ = time;
  if (scanned_) {
    BeginRow(*scanned_);
    ReportRecord *row = RowOf(scanned_->record.index);
    if (row != nullptr && row->scan == 0) {
      row->scan = scan->number;
    }
  }
}

void Timeline::EndScan(uint64_t time) {
  if (scanned_) {
    EndScanRow(time);
  } else if (playhead_.scan() == nullptr) {
    EndOwn(time);
  }
}

void Timeline::EndScanRow(uint64_t end) {
  (scanned_->record.opcode == tvb::kSir ? spent_.ir : spent_.dr) += end - now_;
  now_ = end;
  EndRow(*scanned_);
  scanned_.reset();
}

void Timeline::EndOwn(uint64_t time) {
  ReportRecord &row = own_.emplace_back();
  row.kind = own_kind_;
  row.begin = now_;
  row.time = time - now_;
  spent_.own += row.time;
  now_ = time;
}

// Plays the records before that step, which the lines reach at `time`.
void Timeline::WalkTo(uint64_t step, uint64_t time) {
  while (const std::optional<tvb::PlayedRecord> played = order_.Next()) {
    if (played->step == step) {
      scanned_ = played;
      return;
    }
    Spend(*played, time);
  }
}

// After the last scan: no other has begun.
void Timeline::WalkRest(uint64_t end, uint64_t position, bool done) {
  while (const std::optional<tvb::PlayedRecord> played = order_.Next()) {
    const tvb::RecordView &record = played->record;
    if (record.fault || (!done && (record.IsShift() || record.end > position))) {
      return;
    }
    Spend(*played, end);
  }
}

void Timeline::Spend(const tvb::PlayedRecord &played, uint64_t end) {
  BeginRow(played);
  if (played.record.Runs()) {
    const uint64_t wait = WaitOf(played);
    const uint64_t before = now_;
    now_ = std::min(end, before + ClockingOf(played) + wait);
    spent_.waited += std::min(wait, now_ - before);
    spent_.clocked += now_ - before - std::min(wait, now_ - before);
  }
  EndRow(played);
}

uint64_t Timeline::WaitOf(const tvb::PlayedRecord &played) const {
  if (!played.record.Runs()) {
    return 0;
  }
  return tvb::RunTestWait(played.clocks, order_.player().rate().Clocked(), ClockingOf(played));
}

// Of a run-test.
uint64_t Timeline::ClockingOf(const tvb::PlayedRecord &played) const {
  const auto calls = static_cast<double>(tvb::RunTestPinCalls(played.clocks));
  return static_cast<uint64_t>(calls * call_time_);
}

void Timeline::BeginRow(const tvb::PlayedRecord &played) {
  ReportRecord *row = RowOf(played.record.index);
  if (row != nullptr && !row->begin) {
    row->begin = now_;
    row->clocks = played.clocks;
    row->wait = WaitOf(played);
  }
  ReportRecord *loop = played.loop == 0 ? nullptr : RowOf(played.loop);
  if (loop != nullptr) {
    loop->passes = std::max(loop->passes, played.pass);
  }
}

void Timeline::EndRow(const tvb::PlayedRecord &played) {
  ReportRecord *row = RowOf(played.record.index);
  if (row != nullptr && played.pass == 1) {
    row->time = now_ - row->begin.value_or(now_);
    row->wait = std::min(row->wait, row->time);
  }
  ReportRecord *loop = played.loop == 0 ? nullptr : RowOf(played.loop);
  if (loop != nullptr) {
    loop->time = now_ - loop->begin.value_or(now_);
  }
}

void Timeline::Finish(uint64_t end, uint64_t position, bool done) {
  stopped_since_ = scanned_ ? now_ : end;
  if (scanned_) {
    EndScanRow(end);
  } else {
    WalkRest(end, position, done);
  }
  rows_.insert(rows_.begin(), own_.begin(), own_.end());
}

ReportRecord *Timeline::RowOf(uint64_t record) {
  return record <= rows_.size() ? &rows_[record - 1] : nullptr;
}

ReportWave LastChanges::Wave(const Lines &lines, uint64_t end) const {
  const uint64_t first = added_ - std::min<uint64_t>(added_, kShown);
  const LineChange *before = first == 0 ? nullptr : &kept_[(first - 1) % kKept];
  ReportWave wave;
  wave.begin = before == nullptr ? 0 : before->time;
  wave.end = end;
  wave.state = svf::StandardName(before == nullptr ? svf::TapState::kReset : before->state);
  for (const Line line : {Line::kTck, Line::kTms, Line::kTdi, Line::kTdo}) {
    wave.levels[static_cast<int>(line)] = lines.level(line);
  }
  for (uint64_t i = first; i < added_; ++i) {
    const LineChange &change = kept_[i % kKept];
    wave.changes.push_back({change.time, static_cast<uint8_t>(change.line), change.level,
                            change.entered ? std::string(svf::StandardName(change.state)) : ""});
  }
  // A change is one to the other level.
  for (auto change = wave.changes.rbegin(); change != wave.changes.rend(); ++change) {
    wave.levels[change->line] = !change->level;
  }
  return wave;
}

}  // namespace tool
