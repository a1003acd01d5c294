// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "tools/cli/bit_row.h"
#include "tools/dump/dump.h"
#include "tvb/names.h"
#include "tvb/player.h"
#include "tvb/text.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

void AddValue(const tvb::RecordView &record, Json &object) {
  if (!record.value) {
    return;
  }
  const char *name = record.opcode == tvb::kFrequency ? "hz"
                     : record.opcode == tvb::kLoop    ? "passes"
                                                      : "bits";
  object[name] = record.value->value;
}

void AddParameter(const tvb::BlockView &block, Json &object) {
  const tvb::Codec *const codec = block.codec();
  if (codec && codec->parameter_name) {
    object[codec->parameter_name] = block.parameter;
  }
}

void AddBlock(const tvb::BlockView &block, Json &object) {
  object["encoding"] = block.mode ? tvb::EncodingName(*block.mode) : "plain";
  AddParameter(block, object);
  object["stored_offset"] = block.offset;
  object["stored"] = block.size;
  object["decoded"] = block.count;
  object["exact"] = block.Exact();
  if (block.fault) {
    object["error"] = block.fault->message;
  }
}

void AddNumber(const tvb::FieldView &field, Json &object) {
  object["stored_number"] = field.number->value;
  const tvb::RunTestField value = tvb::ReadRunTestField(field);
  object["valid"] = value.valid;
  if (field.tag == tvb::kTagCycles) {
    object["cycles"] = value.cycles;
  } else {
    object["microseconds"] = 1000 * value.milliseconds + value.microseconds;
  }
}

Json FieldObject(tvb::Bytes image, const tvb::RecordView &record, const tvb::FieldView &field,
                 bool hex) {
  Json object;
  object["tag"] = field.tag;
  object["name"] = tvb::TagName(field.tag);
  object["offset"] = field.offset;
  if (field.number) {
    AddNumber(field, object);
  }
  if (field.block) {
    AddBlock(*field.block, object);
  }
  if (hex && field.block && IsShown(record)) {
    const tvb::Buffer data = tvb::DecodeBlock(image, *field.block);
    object["data"] = data.empty() ? "" : BitRow::FromFile(data, record.bits()).Hex();
  }
  return object;
}

void AddFault(const tvb::RecordView &record, Json &object) {
  if (record.fault) {
    object["error"] = {{"offset", record.fault->offset}, {"message", record.fault->message}};
  }
}

Json SealObject(const tvb::SealView &seal) {
  if (seal.state == tvb::SealState::kNone) {
    return Json();
  }
  return {
      {"right", seal.state == tvb::SealState::kRight}, {"crc", seal.stored}, {"found", seal.found}};
}

}  // namespace

void DumpJson::Header(const tvb::HeaderView &header, const tvb::SealView &seal) {
  Json object;
  object["record"] = 0;
  object["name"] = "HEADER";
  object["offset"] = 0;
  object["bytes"] = header.size;
  object["mark"] = header.header.mark;
  object["stamp"] = header.header.stamp;
  object["compression"] = header.header.compression;
  object["plain_blocks"] = header.plain();
  object["number"] = header.number.value;
  object["seal"] = SealObject(seal);
  out_.Write(fmt::format("{}\n", object.dump()));
}

void DumpJson::Record(const tvb::RecordView &record, uint64_t loop) {
  Json object;
  object["record"] = record.index;
  object["name"] = tvb::OpcodeName(record.opcode);
  object["opcode"] = record.opcode;
  object["offset"] = record.offset;
  object["bytes"] = record.end - record.offset;
  object["length"] = record.length.value;
  object["loop"] = loop == 0 ? Json() : Json(loop);
  AddValue(record, object);
  if (record.gate) {
    object["gate"] = *record.gate;
    object["runs"] = record.Runs();
  }
  Json &fields = object["fields"] = Json::array();
  for (const tvb::FieldView &field : record.fields) {
    fields.push_back(FieldObject(image_, record, field, hex_));
  }
  AddFault(record, object);
  out_.Write(fmt::format("{}\n", object.dump()));
}

}  // namespace tool
