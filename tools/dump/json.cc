// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "tools/dump/dump.h"
#include "tvb/names.h"
#include "tvb/player.h"
#include "tvb/text.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

// Writes an object, member by member. Names and plain texts have no character to escape.
class ObjectWriter {
 public:
  // `out` outlives the object.
  explicit ObjectWriter(TextBuffer &out) : out_(out) {
    out_.Put('{');
  }

  void Name(std::string_view name) {
    out_.Put(is_first_ ? "\"" : ",\"", name, "\":");
    is_first_ = false;
  }
  template <typename Integer>
  void Number(std::string_view name, Integer value) {
    Name(name);
    out_.Put(value);
  }
  void Null(std::string_view name) {
    Name(name);
    out_.Put("null");
  }
  void Flag(std::string_view name, bool value) {
    Name(name);
    out_.Put(value ? "true" : "false");
  }
  void PlainText(std::string_view name, std::string_view text) {
    Name(name);
    out_.Put('"', text, '"');
  }
  void Message(std::string_view name, const std::string &text) {
    Name(name);
    out_.Put(Json(text).dump());
  }
  void End() {
    out_.Put('}');
  }

 private:
  TextBuffer &out_;
  bool is_first_ = true;
};

void AddValue(const tvb::RecordView &record, ObjectWriter &object) {
  if (!record.value) {
    return;
  }
  const char *name = record.opcode == tvb::kFrequency ? "hz"
                     : record.opcode == tvb::kLoop    ? "passes"
                                                      : "bits";
  object.Number(name, record.value->value);
}

void AddBlock(const tvb::BlockView &block, ObjectWriter &object) {
  object.PlainText("encoding", block.mode ? tvb::EncodingName(*block.mode) : "plain");
  const tvb::Codec *const codec = block.codec();
  if (codec && codec->parameter_name) {
    object.Number(codec->parameter_name, block.parameter);
  }
  object.Number("stored_offset", block.offset);
  object.Number("stored", block.size);
  object.Number("decoded", block.count);
  object.Flag("exact", block.Exact());
  if (block.fault) {
    object.Message("error", block.fault->message);
  }
}

void AddNumber(const tvb::FieldView &field, ObjectWriter &object) {
  object.Number("stored_number", field.number->value);
  const tvb::RunTestField value = tvb::ReadRunTestField(field);
  object.Flag("valid", value.valid);
  if (field.tag == tvb::kTagCycles) {
    object.Number("cycles", value.cycles);
  } else {
    object.Number("microseconds", 1000 * value.milliseconds + value.microseconds);
  }
}

void AddFault(const tvb::Fault &fault, ObjectWriter &object, TextBuffer &out) {
  object.Name("error");
  ObjectWriter error(out);
  error.Number("offset", fault.offset);
  error.Message("message", fault.message);
  error.End();
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
  line_.Clear();
  ObjectWriter object(line_);
  object.Number("record", record.index);
  object.PlainText("name", tvb::OpcodeName(record.opcode));
  object.Number("opcode", record.opcode);
  object.Number("offset", record.offset);
  object.Number("bytes", record.end - record.offset);
  object.Number("length", record.length.value);
  if (loop == 0) {
    object.Null("loop");
  } else {
    object.Number("loop", loop);
  }
  AddValue(record, object);
  if (record.gate) {
    object.Number("gate", *record.gate);
    object.Flag("runs", record.Runs());
  }
  object.Name("fields");
  Fields(record);
  if (record.fault) {
    AddFault(*record.fault, object, line_);
  }
  object.End();
  line_.Put('\n');
  out_.Write(line_.text());
}

void DumpJson::Fields(const tvb::RecordView &record) {
  const char *separator = "";
  line_.Put('[');
  for (const tvb::FieldView &field : record.fields) {
    line_.Put(separator);
    Field(record, field);
    separator = ",";
  }
  line_.Put(']');
}

void DumpJson::Field(const tvb::RecordView &record, const tvb::FieldView &field) {
  ObjectWriter object(line_);
  object.Number("tag", field.tag);
  object.PlainText("name", tvb::TagName(field.tag));
  object.Number("offset", field.offset);
  if (field.number) {
    AddNumber(field, object);
  }
  if (field.block) {
    AddBlock(*field.block, object);
  }
  if (hex_ && field.block && IsShown(record)) {
    object.Name("data");
    Data(record, *field.block);
  }
  object.End();
}

void DumpJson::Data(const tvb::RecordView &record, const tvb::BlockView &block) {
  const tvb::Buffer data = tvb::DecodeBlock(image_, block);
  line_.Put('"');
  if (!data.empty()) {
    line_.PutRegister(data, record.bits());
  }
  line_.Put('"');
}

}  // namespace tool
