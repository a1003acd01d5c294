// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/compilation.h"

#include <utility>

#include "svf/parser.h"
#include "svf/text.h"
#include "tools/cli/report.h"
#include "tvb/header.h"

namespace tool {
namespace {

void CompileStatement(Compiler &compiler, const svf::Statement &statement, SourceNotes &notes) {
  try {
    compiler.Compile(statement);
  } catch (const svf::Error &error) {
    notes.Refuse(error.offset(), error.what());
  }
}

}  // namespace

void CompileText(Compiler &compiler, InputFile &input, SourceNotes &notes) {
  svf::Parser parser(input.text());
  Progress progress("compile", input.size());
  try {
    svf::Statement statement;
    while (parser.Next(statement)) {
      CompileStatement(compiler, statement, notes);
      progress.Update(parser.offset());
      input.Forget(parser.offset());
    }
    compiler.Finish();
  } catch (const svf::Error &error) {
    notes.Refuse(error.offset(), error.what());
  }
  notes.Finish();
}

RecordFolder::Sink CompiledFiles::Next(RecordFolder::Sink further) {
  File &file = files_.emplace_back();
  return [&file, further = std::move(further)](tvb::Bytes records) {
    tvb::Append(file.image, records);
    if (further) {
      further(records);
    }
  };
}

void CompiledFiles::AddScan(uint64_t number, svf::Register which,
                            std::span<const Compiler::Piece> pieces) {
  for (const Compiler::Piece &piece : pieces) {
    const svf::Position position = lines_.At(piece.offset);
    files_.back().pieces.push_back({number, 0, position.line, position.column,
                                    which == svf::Register::kSir, piece.header, piece.bits,
                                    piece.trailer});
  }
}

tvb::Buffer CompiledFiles::TakeImage(size_t index) {
  return std::move(files_[index].image);
}

FileMap CompiledFiles::TakeMap(size_t index, std::string name) {
  File &file = files_[index];
  return MapFile(std::move(name), file.image, tvb::ReadHeader(file.image), std::move(file.pieces));
}

}  // namespace tool
