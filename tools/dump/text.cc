// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include "tools/cli/text.h"
#include "tools/dump/dump.h"
#include "tvb/names.h"
#include "tvb/player.h"
#include "tvb/text.h"

namespace tool {
namespace {

constexpr size_t kDigitsInRow = 64;
constexpr size_t kFieldColumn = 30;
constexpr size_t kNameColumns = 13;

// An amount from the file, which may be negative or exceed 32 bits.
std::string AmountText(const tvb::NumberView &number) {
  if (number.lossy || number.value >= 0) {
    return number.lossy ? tvb::NumberText(number) : NumberText(static_cast<uint64_t>(number.value));
  }
  return "-" + NumberText(static_cast<uint64_t>(-number.value));
}

void PutRunTest(const tvb::RecordView &record, TextBuffer &line) {
  if (!record.Runs()) {
    if (record.gate) {
      line.Put("does not run (gate byte ", *record.gate, ")");
    }
  } else if (record.fields.empty()) {
    line.Put("no time, no cycles");
  }
}

// The summary of a record, shown beside its fields.
void PutSummary(const tvb::RecordView &record, TextBuffer &line) {
  const std::string number = record.value ? AmountText(*record.value) : "?";
  switch (record.opcode) {
    case tvb::kRunTest:
      return PutRunTest(record, line);
    case tvb::kFrequency:
      return line.Put(number, number == "0" ? " Hz (unset)" : " Hz");
    case tvb::kLoop:
      return line.Put(number, number == "1" ? " pass" : " passes");
    case tvb::kEndLoop:
      return;
  }
  if (record.IsShift() || record.IsPad()) {
    return line.Put(number, number == "1" ? " bit" : " bits");
  }
  line.Put("opcode ", record.opcode);
}

void PutNumberField(const tvb::FieldView &field, TextBuffer &line) {
  const tvb::RunTestField value = tvb::ReadRunTestField(field);
  if (!value.valid) {
    line.Put(AmountText(*field.number), " (no valid number)");
  } else if (field.tag == tvb::kTagCycles) {
    line.Put(NumberText(value.cycles), " TCK");
  } else if (value.milliseconds > 0) {
    line.Put(NumberText(value.milliseconds), " ms");
  } else {
    line.Put(NumberText(value.microseconds), " us");
  }
}

void PutBlock(const tvb::BlockView &block, TextBuffer &line) {
  line.PutLeft(block.mode ? tvb::EncodingName(*block.mode) : "plain", 10);
  line.Put("  ");
  line.PutRight(NumberText(block.size), 7);
  line.Put(" -> ", CountText(block.count, "byte"));
  const tvb::Codec *const codec = block.codec();
  if (codec && codec->parameter_text) {
    line.Put(", ", codec->parameter_text(block.parameter));
  }
  if (block.fault) {
    line.Put("  ! ", block.fault->message);
  } else if (!block.Exact()) {
    line.Put("  ! decodes to ", CountText(block.written + block.surplus, "byte"));
  }
}

}  // namespace

bool IsShown(const tvb::RecordView &record) {
  return record.bits() <= tvb::kMaxScanClocks;
}

void DumpText::Header(const tvb::HeaderView &header, const tvb::SealView &seal) {
  out_.Write(fmt::format("header of {}, compression byte {}: data blocks {}\n",
                         CountText(header.size, "byte"), tvb::Hex(header.header.compression),
                         header.plain() ? "are plain" : "name their encoding"));
  const char *const mark = seal.state == tvb::SealState::kWrong ? "! " : "";
  out_.Write(fmt::format("{}{}\n\n", mark, tvb::SealText(seal)));
  out_.Write("record    offset     bytes  what\n");
}

void DumpText::Record(const tvb::RecordView &record, uint64_t loop) {
  mark_ = loop != 0 ? "| " : "";
  line_.PutRight(std::to_string(record.index), 6);
  line_.Put("  ");
  line_.PutRight(tvb::Hex(record.offset), 8);
  line_.Put("  ");
  line_.PutRight(NumberText(record.end - record.offset), 8);
  line_.Put("  ", mark_);
  line_.PutLeft(tvb::OpcodeName(record.opcode), kNameColumns - mark_.size());
  line_.Put("  ");
  PutSummary(record, line_);
  if (!record.fault && record.EndByLength() != static_cast<int64_t>(record.end)) {
    line_.Put("  ! its length says ", AmountText(record.length), " bits");
  }
  WriteLine();
  for (const tvb::FieldView &field : record.fields) {
    Field(record, field);
  }
}

void DumpText::Field(const tvb::RecordView &record, const tvb::FieldView &field) {
  Indent();
  line_.PutLeft(tvb::TagName(field.tag), 6);
  line_.Put("  ");
  if (field.block) {
    PutBlock(*field.block, line_);
  } else if (field.number) {
    PutNumberField(field, line_);
  }
  WriteLine();
  if (hex_ && field.block && IsShown(record)) {
    Data(record, *field.block);
  }
}

void DumpText::Data(const tvb::RecordView &record, const tvb::BlockView &block) {
  const tvb::Buffer data = tvb::DecodeBlock(image_, block);
  if (data.empty()) {
    return;
  }
  digits_.Clear();
  digits_.PutRegister(data, record.bits());
  const std::string_view digits = digits_.text();
  for (size_t at = 0; at < digits.size(); at += kDigitsInRow) {
    Indent();
    line_.Put("  ", digits.substr(at, kDigitsInRow));
    WriteLine();
  }
}

void DumpText::Indent() {
  line_.PutLeft("", kFieldColumn);
  line_.Put(mark_);
}

void DumpText::WriteLine() {
  line_.EndLine();
  out_.Write(line_.text());
  line_.Clear();
}

}  // namespace tool
