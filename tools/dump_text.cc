// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include "tools/cli/bit_row.h"
#include "tools/dump.h"
#include "tvb/check_data.h"
#include "tvb/check_time.h"
#include "tvb/text.h"

namespace tool {
namespace {

constexpr size_t kDigitsInLine = 64;
constexpr int kFieldColumn = 30;

std::string RunTestText(const tvb::RecordView &record) {
  if (!record.Runs()) {
    return record.gate ? fmt::format("does not run (gate byte {})", *record.gate) : "";
  }
  return record.fields.empty() ? "no time, no cycles" : "";
}

// What a record says beside its fields.
std::string Summary(const tvb::RecordView &record) {
  std::string number = record.value ? tvb::NumberText(*record.value) : "?";
  switch (record.opcode) {
    case tvb::kRunTest:
      return RunTestText(record);
    case tvb::kFrequency:
      return number == "0" ? "0 Hz (unset)" : number + " Hz";
    case tvb::kLoop:
      return number + (number == "1" ? " pass" : " passes");
    case tvb::kEndLoop:
      return "";
  }
  if (record.IsShift() || record.IsPad()) {
    return number + (number == "1" ? " bit" : " bits");
  }
  return fmt::format("opcode {}", record.opcode);
}

std::string NumberFieldText(const tvb::FieldView &field) {
  const tvb::RunTestField value = tvb::ReadRunTestField(field);
  if (!value.valid) {
    return fmt::format("{} (no valid number)", tvb::NumberText(*field.number));
  }
  if (field.tag == tvb::kTagCycles) {
    return fmt::format("{} TCK", value.cycles);
  }
  return value.milliseconds > 0 ? fmt::format("{} ms", value.milliseconds)
                                : fmt::format("{} us", value.microseconds);
}

std::string ParameterText(const tvb::BlockView &block) {
  const tvb::Codec *const codec = block.codec();
  return codec && codec->parameter_text ? ", " + codec->parameter_text(block.parameter) : "";
}

std::string BlockText(const tvb::BlockView &block) {
  std::string text = fmt::format("{:<10}  {:>7} -> {} bytes{}",
                                 block.mode ? tvb::EncodingName(*block.mode) : "plain", block.size,
                                 block.count, ParameterText(block));
  if (block.fault) {
    text += fmt::format("  ! {}", block.fault->message);
  } else if (!block.Exact()) {
    text += fmt::format("  ! decodes to {} bytes", block.written + block.surplus);
  }
  return text;
}

}  // namespace

std::string SvfHex(tvb::Bytes bytes, uint32_t bits) {
  return BitRow::FromFile(bytes.data(), bits).Hex();
}

bool IsShown(const tvb::RecordView &record) {
  return record.bits() <= tvb::kMostClocks;
}

void DumpText::Header(const tvb::HeaderView &header) {
  out_.Write(fmt::format("header of {} bytes, compression byte {}: data blocks {}\n\n", header.size,
                         tvb::Hex(header.header.compression),
                         header.plain() ? "are plain" : "name their encoding"));
  out_.Write("record    offset     bytes  what\n");
}

void DumpText::Record(const tvb::RecordView &record, uint64_t loop) {
  const char *const loop_mark = loop != 0 ? "| " : "";
  std::string line =
      fmt::format("{:>6}  {:>8}  {:>8}  {:<13}  {}", record.index, tvb::Hex(record.offset),
                  record.end - record.offset,
                  std::string(loop_mark) + tvb::OpcodeName(record.opcode), Summary(record));
  if (!record.fault && record.EndByLength() != static_cast<int64_t>(record.end)) {
    line += fmt::format("  ! its length says {} bits", tvb::NumberText(record.length));
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out_.Write(line + "\n");
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
  line.erase(line.find_last_not_of(' ') + 1);
  out_.Write(line + "\n");
  if (hex_ && field.block && IsShown(record)) {
    Data(record, *field.block, indent + "  ");
  }
}

void DumpText::Data(const tvb::RecordView &record, const tvb::BlockView &block,
                    const std::string &indent) {
  const tvb::Buffer data = tvb::DecodeBlock(image_, block);
  if (data.empty()) {
    return;
  }
  const std::string digits = SvfHex(data, record.bits());
  for (size_t at = 0; at < digits.size(); at += kDigitsInLine) {
    out_.Write(indent + digits.substr(at, kDigitsInLine) + "\n");
  }
}

}  // namespace tool
