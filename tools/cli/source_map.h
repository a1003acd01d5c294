// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Where the scans of TVB files come from: the statements of the SVF file that they were made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cli/input_file.h"
#include "tvb/bytes.h"
#include "tvb/reader.h"

namespace tool {

// The bits of a scan that one statement gave, in shift order: those of the header register in
// force, its own, those of the trailer register.
struct SourcePiece {
  uint64_t scan = 0;    // number in the TVB file, in play order, from 1
  uint64_t record = 0;  // number of its record
  uint64_t line = 0;    // of the statement's first character; see svf::Position
  uint64_t column = 0;
  bool instruction = false;  // SIR; else SDR
  uint32_t header = 0;
  uint32_t bits = 0;
  uint32_t trailer = 0;
};

// The pieces of a TVB file, in play order. A scan without a piece is not of the SVF file. The file
// is known again, sealed or not, by its size and its checksum, the 64-bit FNV-1a hash of its bytes,
// with those of a seal as 0.
struct FileMap {
  std::string name;
  uint64_t size = 0;
  uint64_t checksum = 0;
  std::vector<SourcePiece> pieces;
};

// A map of all TVB files that were made of one SVF file. As text, a line each:
//   tvb-map 1
//   source NAME
//   file SIZE CHECKSUM NAME
//   SCAN RECORD LINE COLUMN SIR|SDR HEADER BITS TRAILER
//   end
// with the pieces of each file after it; the checksum is hexadecimal, all else decimal.
struct SourceMap {
  std::string source;
  std::vector<FileMap> files;

  // The map of that file; null if it is none of the files.
  const FileMap *Find(tvb::Bytes image) const;
};

// The map of a file; `pieces` need no record number yet.
FileMap MapFile(std::string name, tvb::Bytes image, const tvb::HeaderView &header,
                std::vector<SourcePiece> pieces);

std::string SourceMapText(const SourceMap &map);

// Throws Failure, naming the line, if the file is not a map.
SourceMap ReadSourceMap(const InputFile &file);

// Where a bit of a scan comes from.
struct SourcePlace {
  std::string where;           // "NAME:LINE:COLUMN"
  std::string_view statement;  // "SDR"
  std::string_view reg;        // the same, or the header or trailer that has the bit: "HDR"
  uint32_t bit = 0;            // of that register
  uint64_t line = 0;
  uint64_t column = 0;
};

// The place of bit `bit` of the record of scan `scan`; none if that is not of the source.
std::optional<SourcePlace> FindSource(const SourceMap &map, const FileMap &file, uint64_t scan,
                                      uint32_t bit);

// A statement of SVF on one line, without its comments and shortened if it is long; empty if the
// text has no such place.
std::string StatementText(std::string_view source, uint64_t line, uint64_t column);

}  // namespace tool
