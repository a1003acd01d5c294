// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include "tools/cli/bit_row.h"
#include "tools/cli/text.h"
#include "tools/dump/dump.h"
#include "tvb/names.h"
#include "tvb/player.h"
#include "tvb/text.h"

namespace tool {
namespace {

constexpr size_t kDigitsInRow = 64;
constexpr int kFieldColumn = 30;

// An amount from the file, which may be negative or exceed 32 bits.
std::string AmountText(const tvb::NumberView &number) {
  if (number.lossy || number.value >= 0) {
    return number.lossy ? tvb::NumberText(number) : NumberText(static_cast<uint64_t>(number.value));
  }
  return fmt::format("-{}", NumberText(static_cast<uint64_t>(-number.value)));
}

std::string RunTestText(const tvb::RecordView &record) {
  if (!record.Runs()) {
    return record.gate ? fmt::format("does not run (gate byte {})", *record.gate) : "";
  }
  return record.fields.empty() ? "no time, no cycles" : "";
}

// The summary of a record, shown beside its fields.
std::string Summary(const tvb::RecordView &record) {
  const std::string number = record.value ? AmountText(*record.value) : "?";
  switch (record.opcode) {
    case tvb::kRunTest:
      return RunTestText(record);
    case tvb::kFrequency:
      return number == "0" ? "0 Hz (unset)" : fmt::format("{} Hz", number);
    case tvb::kLoop:
      return fmt::format("{} {}", number, number == "1" ? "pass" : "passes");
    case tvb::kEndLoop:
      return "";
  }
  if (record.IsShift() || record.IsPad()) {
    return fmt::format("{} {}", number, number == "1" ? "bit" : "bits");
  }
  return fmt::format("opcode {}", record.opcode);
}

std::string NumberFieldText(const tvb::FieldView &field) {
  const tvb::RunTestField value = tvb::ReadRunTestField(field);
  if (!value.valid) {
    return fmt::format("{} (no valid number)", AmountText(*field.number));
  }
  if (field.tag == tvb::kTagCycles) {
    return fmt::format("{} TCK", NumberText(value.cycles));
  }
  return value.milliseconds > 0 ? fmt::format("{} ms", NumberText(value.milliseconds))
                                : fmt::format("{} us", NumberText(value.microseconds));
}

std::string ParameterText(const tvb::BlockView &block) {
  const tvb::Codec *const codec = block.codec();
  return codec && codec->parameter_text ? ", " + codec->parameter_text(block.parameter) : "";
}

std::string BlockText(const tvb::BlockView &block) {
  const std::string text =
      fmt::format("{:<10}  {:>7} -> {}{}", block.mode ? tvb::EncodingName(*block.mode) : "plain",
                  NumberText(block.size), CountText(block.count, "byte"), ParameterText(block));
  if (block.fault) {
    return fmt::format("{}  ! {}", text, block.fault->message);
  }
  return block.Exact() ? text
                       : fmt::format("{}  ! decodes to {}", text,
                                     CountText(block.written + block.surplus, "byte"));
}

// A line without its trailing blanks.
void WriteLine(OutputFile &out, std::string_view line) {
  out.Write(line.substr(0, line.find_last_not_of(' ') + 1));
  out.Write("\n");
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
  const char *const loop_mark = loop != 0 ? "| " : "";
  std::string line =
      fmt::format("{:>6}  {:>8}  {:>8}  {:<13}  {}", record.index, tvb::Hex(record.offset),
                  NumberText(record.end - record.offset),
                  fmt::format("{}{}", loop_mark, tvb::OpcodeName(record.opcode)), Summary(record));
  if (!record.fault && record.EndByLength() != static_cast<int64_t>(record.end)) {
    line += fmt::format("  ! its length says {} bits", AmountText(record.length));
  }
  WriteLine(out_, line);
  for (const tvb::FieldView &field : record.fields) {
    Field(record, field, fmt::format("{:{}}{}", "", kFieldColumn, loop_mark));
  }
}

void DumpText::Field(const tvb::RecordView &record, const tvb::FieldView &field,
                     const std::string &indent) {
  std::string text;
  if (field.block) {
    text = BlockText(*field.block);
  } else if (field.number) {
    text = NumberFieldText(field);
  }
  std::string line = fmt::format("{}{:<6}  {}", indent, tvb::TagName(field.tag), text);
  WriteLine(out_, line);
  if (hex_ && field.block && IsShown(record)) {
    Data(record, *field.block, fmt::format("{}  ", indent));
  }
}

void DumpText::Data(const tvb::RecordView &record, const tvb::BlockView &block,
                    const std::string &indent) {
  const tvb::Buffer data = tvb::DecodeBlock(image_, block);
  if (data.empty()) {
    return;
  }
  const std::string digits = BitRow::FromFile(data, record.bits()).Hex();
  for (size_t at = 0; at < digits.size(); at += kDigitsInRow) {
    WriteLine(out_, fmt::format("{}{}", indent, digits.substr(at, kDigitsInRow)));
  }
}

}  // namespace tool
