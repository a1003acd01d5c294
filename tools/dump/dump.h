// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The output formats of the command `dump`.
#pragma once

#include <cstdint>
#include <string_view>

#include "tools/cli/output_file.h"
#include "tools/cli/text_buffer.h"
#include "tvb/bytes.h"
#include "tvb/reader.h"
#include "tvb/seal.h"

namespace tool {

// Takes the records in file order.
class DumpFormat {
 public:
  virtual ~DumpFormat() = default;
  virtual void Header(const tvb::HeaderView &header, const tvb::SealView &seal) = 0;

  // `loop`: the number of the LOOP record that repeats this record, 0 for none; a LOOP and its
  // ENDLOOP are not in their own loop.
  virtual void Record(const tvb::RecordView &record, uint64_t loop) = 0;
};

// True if the player can hold a register of the record's length; longer data is not shown.
bool IsShown(const tvb::RecordView &record);

// Text lines. `hex`: with the data.
class DumpText : public DumpFormat {
 public:
  // Both outlive the object.
  DumpText(tvb::Bytes image, OutputFile &out, bool hex) : image_(image), out_(out), hex_(hex) {}

  void Header(const tvb::HeaderView &header, const tvb::SealView &seal) override;
  void Record(const tvb::RecordView &record, uint64_t loop) override;

 private:
  void Field(const tvb::RecordView &record, const tvb::FieldView &field);
  void Data(const tvb::RecordView &record, const tvb::BlockView &block);
  void Indent();
  void WriteLine();  // without its trailing blanks

  tvb::Bytes image_;
  OutputFile &out_;
  bool hex_;
  std::string_view mark_;  // of the lines inside a loop
  TextBuffer line_;
  TextBuffer digits_;
};

// One JSON object per line: the header as record 0, then the records.
class DumpJson : public DumpFormat {
 public:
  DumpJson(tvb::Bytes image, OutputFile &out, bool hex) : image_(image), out_(out), hex_(hex) {}

  void Header(const tvb::HeaderView &header, const tvb::SealView &seal) override;
  void Record(const tvb::RecordView &record, uint64_t loop) override;

 private:
  void Fields(const tvb::RecordView &record);
  void Field(const tvb::RecordView &record, const tvb::FieldView &field);
  void Data(const tvb::RecordView &record, const tvb::BlockView &block);

  tvb::Bytes image_;
  OutputFile &out_;
  bool hex_;
  TextBuffer line_;
};

}  // namespace tool
