// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The files to play: TVB files, and those made in memory of SVF files.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/cli/input_file.h"
#include "tools/cli/source_map.h"
#include "tvb/seal.h"

namespace tool {

// An SVF file, or the name of one, and the map of what was made of it.
struct PlaySource {
  SourceMap map;
  std::unique_ptr<InputFile> svf;  // null if only the map is at hand
};

// A TVB file to play.
struct PlayInput {
  std::unique_ptr<TvbFile> file;
  const PlaySource *source = nullptr;  // null if not known
  const FileMap *map = nullptr;        // of source->map; null if not known

  // None if the file was made in memory.
  std::optional<tvb::SealView> seal = std::nullopt;

  // Where a bit of a record comes from, as FindSource().
  std::optional<SourcePlace> Find(uint64_t scan, uint32_t bit) const {
    return map == nullptr ? std::nullopt : FindSource(source->map, *map, scan, bit);
  }

  // The statement at that place, as StatementText(); empty if the SVF file is not at hand.
  std::string Statement(const SourcePlace &place) const;
};

struct PlayInputOptions {
  std::vector<std::string> paths;
  std::string map;             // of TVB files; empty: none
  bool pause_as_idle = false;  // in SVF files
  bool quiet = false;          // no notes of SVF files
};

// The files at the paths, in order, all opened before the first is played. An SVF file is compiled
// as by tvb compile, with its warnings, and may become several.
class PlayInputs {
 public:
  // Throws Failure if a file cannot be played or has a wrong seal, or if the map is of none of
  // them.
  explicit PlayInputs(const PlayInputOptions &options);

  const std::vector<PlayInput> &files() const {
    return files_;
  }

  // The same files, which still need this object.
  std::vector<PlayInput> TakeFiles() {
    return std::move(files_);
  }

 private:
  void Open(const std::string &path);
  void Compile(std::unique_ptr<InputFile> svf);
  PlayInput &Add(std::unique_ptr<TvbFile> file, const PlaySource *source);
  void ReadMap();

  const PlayInputOptions &options_;
  std::vector<std::unique_ptr<PlaySource>> sources_;
  std::vector<PlayInput> files_;
};

}  // namespace tool
