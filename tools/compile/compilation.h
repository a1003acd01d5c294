// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// An SVF file compiled as a whole.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cli/input_file.h"
#include "tools/cli/source_map.h"
#include "tools/compile/compiler.h"
#include "tools/compile/source_notes.h"
#include "tvb/bytes.h"

namespace tool {

// Passes all statements to `compiler` and finishes it, with a progress line. Goes on after an
// error, to find all of them; then throws Failure.
void CompileText(Compiler &compiler, InputFile &input, SourceNotes &notes);

// The files that a compiler writes, in memory, and where their scans come from.
class CompiledFiles {
 public:
  // `source`: the text that is compiled; it must live as long as the object.
  explicit CompiledFiles(std::string_view source) : lines_(source) {}

  // Begins the next file. What the sink gets is also passed to `further`, if there is one.
  RecordFolder::Sink Next(RecordFolder::Sink further = {});

  // For Compiler::WatchScans(): scans of the file begun last.
  void AddScan(uint64_t number, svf::Register which, std::span<const Compiler::Piece> pieces);

  size_t size() const {
    return files_.size();
  }

  // The image of a file and its map under that name; each can be taken once.
  tvb::Buffer TakeImage(size_t index);
  FileMap TakeMap(size_t index, std::string name);

 private:
  struct File {
    tvb::Buffer image;
    std::vector<SourcePiece> pieces;
  };

  svf::LineIndex lines_;
  std::deque<File> files_;
};

}  // namespace tool
