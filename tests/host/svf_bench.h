// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the tests of SVF and of its compilation start from.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "svf/parser.h"
#include "svf/text.h"
#include "tools/compile/compiler.h"
#include "tools/compile/source_notes.h"
#include "tvb/play_order.h"
#include "tvb/reader.h"

namespace test {

// The first statement of a text.
inline svf::Statement ParseOne(std::string_view text) {
  svf::Parser parser(text);
  svf::Statement statement;
  EXPECT_TRUE(parser.Next(statement));
  return statement;
}

// What is wrong with a text, as "LINE:COLUMN: MESSAGE"; empty if nothing is.
template <typename Read>
std::string ErrorOf(std::string_view text, Read &&read) {
  try {
    read();
  } catch (const svf::Error &error) {
    const svf::Position at = svf::LineIndex(text).At(error.offset());
    return std::to_string(at.line) + ":" + std::to_string(at.column) + ": " + error.what();
  }
  return "";
}

inline std::string ParseError(std::string_view text) {
  return ErrorOf(text, [text] {
    svf::Parser parser(text);
    svf::Statement statement;
    while (parser.Next(statement)) {
    }
  });
}

// A TVB file that was compiled, read back.
struct ReadBack {
  void Read() {
    const tvb::HeaderView header = tvb::ReadHeader(image);
    EXPECT_FALSE(header.fault);
    tvb::Reader reader(image, header);
    while (const auto record = reader.Next()) {
      EXPECT_FALSE(record->fault);
      EXPECT_EQ(record->EndByLength(), static_cast<int64_t>(record->end));
      records.push_back(*record);
    }
    EXPECT_EQ(reader.position(), image.size());
  }

  // The data of a field as SVF writes it: the bit that is shifted first is the lowest of the last
  // digit.
  std::string Hex(const tvb::RecordView &record, tvb::Tag tag) const {
    const tvb::Buffer bytes = tvb::FieldData(image, record, tag);
    std::string digits((record.bits() + 3) / 4, '0');
    for (uint32_t bit = 0; bit < record.bits() && !bytes.empty(); ++bit) {
      char &digit = digits[digits.size() - 1 - bit / 4];
      const int value = (digit <= '9' ? digit - '0' : digit - 'A' + 10) |
                        (bytes[bit / 8] >> (7 - bit % 8) & 1) << bit % 4;
      digit = "0123456789ABCDEF"[value];
    }
    return bytes.empty() ? "" : digits;
  }

  std::string Text(const tvb::RecordView &record) const {
    switch (record.opcode) {
      case tvb::kSir:
      case tvb::kSdr:
        return ShiftText(record);
      case tvb::kRunTest:
        return RunTestText(record);
      case tvb::kFrequency:
        return "FREQUENCY " + std::to_string(record.value->value);
      case tvb::kLoop:
        return "LOOP " + std::to_string(record.value->value);
      case tvb::kEndLoop:
        return "ENDLOOP";
      case tvb::kHir:
      case tvb::kTir:
      case tvb::kHdr:
      case tvb::kTdr:
        return "PAD " + std::to_string(record.opcode) + " " + std::to_string(record.bits());
      default:
        return "?";
    }
  }

  std::string ShiftText(const tvb::RecordView &record) const {
    std::string text = record.opcode == tvb::kSir ? "SIR " : "SDR ";
    text += std::to_string(record.bits()) + " " + Hex(record, tvb::kTagTdi);
    if (record.Block(tvb::kTagTdo) != nullptr) {
      text += " " + Hex(record, tvb::kTagTdo) + "/" + Hex(record, tvb::kTagMask);
    }
    return text;
  }

  static std::string RunTestText(const tvb::RecordView &record) {
    if (!record.Runs()) {
      return "IDLE";
    }
    std::string text = "RUNTEST";
    for (const tvb::FieldView &field : record.fields) {
      const int64_t stored = field.number->value;
      if (field.tag == tvb::kTagCycles) {
        text += " " + std::to_string((stored > 32768 ? stored - 32768 : stored) - 10) + " TCK";
      } else if (stored - 10 > 32768) {
        text += " " + std::to_string(stored - 32778) + " ms";
      } else {
        text += " " + std::to_string(stored - 10) + " us";
      }
    }
    return text;
  }

  // All records as text. `from`: how many to leave out at the beginning.
  std::vector<std::string> Texts(size_t from = 0) const {
    std::vector<std::string> texts;
    for (size_t i = from; i < records.size(); ++i) {
      texts.push_back(Text(records[i]));
    }
    return texts;
  }

  tvb::Buffer image;
  std::vector<tvb::RecordView> records;
};

// A text compiled: its first file, and all of them.
struct Compiled : ReadBack {
  explicit Compiled(std::string_view text, const tool::CompileOptions &options = {})
      : notes("test", text), compiler(options, notes, [this](std::optional<size_t>) {
          ReadBack &file = *files.emplace_back(std::make_unique<ReadBack>());
          return [&file](tvb::Bytes bytes) { tvb::Append(file.image, bytes); };
        }) {
    svf::Parser parser(text);
    svf::Statement statement;
    while (parser.Next(statement)) {
      compiler.Compile(statement);
    }
    compiler.Finish();
    notes.ThrowRefusal();
    for (const auto &file : files) {
      file->Read();
    }
    static_cast<ReadBack &>(*this) = *files.front();
  }

  std::vector<std::unique_ptr<ReadBack>> files;
  tool::SourceNotes notes;
  tool::Compiler compiler;
};

inline std::string CompileError(std::string_view text, const tool::CompileOptions &options = {}) {
  return ErrorOf(text, [&] { Compiled compiled(text, options); });
}

}  // namespace test
