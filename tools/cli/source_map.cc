// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/source_map.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "svf/text.h"
#include "tools/cli/command.h"
#include "tools/cli/text.h"
#include "tvb/play_order.h"
#include "tvb/seal.h"

namespace tool {
namespace {

constexpr std::string_view kFirstLine = "tvb-map 1";
constexpr std::string_view kLastLine = "end";
constexpr size_t kMaxStatement = 72;

uint64_t AddToHash(uint64_t hash, tvb::Bytes bytes) {
  for (uint8_t byte : bytes) {
    hash = (hash ^ byte) * 0x100000001B3;
  }
  return hash;
}

uint64_t Checksum(tvb::Bytes image) {
  const tvb::Bytes head = image.first(std::min(image.size(), tvb::kSealEnd));
  tvb::Buffer unsealed(head.begin(), head.end());
  if (tvb::HasSeal(image)) {
    tvb::Unseal(unsealed);
  }
  return AddToHash(AddToHash(0xCBF29CE484222325, unsealed), image.subspan(head.size()));
}

// A line of a map, word by word.
class MapLine {
 public:
  explicit MapLine(std::string_view text) : text_(text) {}

  // The next word; empty at the end.
  std::string_view Word() {
    const std::string_view word = text_.substr(0, text_.find(' '));
    text_.remove_prefix(std::min(text_.size(), word.size() + 1));
    return word;
  }

  template <typename Number>
  bool Read(Number &number, int base = 10) {
    const std::string_view word = Word();
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end && !word.empty();
  }

  // What is left.
  std::string_view rest() const {
    return text_;
  }

 private:
  std::string_view text_;
};

bool ReadFile(MapLine line, SourceMap &map) {
  FileMap file;
  const bool good = line.Word() == "file" && line.Read(file.size) && line.Read(file.checksum, 16);
  file.name = line.rest();
  map.files.push_back(std::move(file));
  return good;
}

bool ReadPiece(MapLine line, SourceMap &map) {
  SourcePiece piece;
  bool good = line.Read(piece.scan) && line.Read(piece.record) && line.Read(piece.line) &&
              line.Read(piece.column);
  const std::string_view statement = line.Word();
  piece.instruction = statement == "SIR";
  good = good && (piece.instruction || statement == "SDR") && line.Read(piece.header) &&
         line.Read(piece.bits) && line.Read(piece.trailer) && line.rest().empty();
  if (!good || map.files.empty()) {
    return false;
  }
  std::vector<SourcePiece> &pieces = map.files.back().pieces;
  if (!pieces.empty() && piece.scan < pieces.back().scan) {
    return false;
  }
  pieces.push_back(piece);
  return true;
}

bool ReadLine(std::string_view text, uint64_t number, SourceMap &map) {
  if (number == 1) {
    return text == kFirstLine;
  }
  if (number == 2) {
    MapLine line(text);
    const bool good = line.Word() == "source";
    map.source = line.rest();
    return good;
  }
  if (text == kLastLine) {
    return true;
  }
  return text.starts_with("file ") ? ReadFile(MapLine(text), map) : ReadPiece(MapLine(text), map);
}

SourcePlace PlaceIn(const SourceMap &map, const SourcePiece &piece, uint32_t bit) {
  SourcePlace place;
  place.where = fmt::format("{}:{}:{}", map.source, piece.line, piece.column);
  place.line = piece.line;
  place.column = piece.column;
  place.statement = piece.instruction ? "SIR" : "SDR";
  if (bit < piece.header) {
    place.reg = piece.instruction ? "HIR" : "HDR";
    place.bit = bit;
  } else if (bit - piece.header < piece.bits) {
    place.reg = place.statement;
    place.bit = bit - piece.header;
  } else {
    place.reg = piece.instruction ? "TIR" : "TDR";
    place.bit = bit - piece.header - piece.bits;
  }
  return place;
}

// The offset of a place; the end of the text if there is no such line.
size_t OffsetOf(std::string_view text, uint64_t line, uint64_t column) {
  size_t at = 0;
  for (; line > 1 && at < text.size(); --line) {
    at = std::min(text.find_first_of("\r\n", at), text.size());
    at += text.substr(at, 2) == "\r\n" ? 2 : at < text.size() ? 1 : 0;
  }
  return std::min<uint64_t>(at + column - 1, text.size());
}

}  // namespace

const FileMap *SourceMap::Find(tvb::Bytes image) const {
  const uint64_t checksum = Checksum(image);
  const auto file = std::ranges::find_if(files, [&](const FileMap &one) {
    return one.size == image.size() && one.checksum == checksum;
  });
  return file == files.end() ? nullptr : &*file;
}

FileMap MapFile(std::string name, tvb::Bytes image, const tvb::HeaderView &header,
                std::vector<SourcePiece> pieces) {
  tvb::PlayOrder order(image, header);
  auto piece = pieces.begin();
  uint64_t scan = 0;
  while (const std::optional<tvb::PlayedRecord> played = order.Next()) {
    scan += played->record.IsShift();
    for (; piece != pieces.end() && piece->scan == scan; ++piece) {
      piece->record = played->record.index;
    }
  }
  return {std::move(name), image.size(), Checksum(image), std::move(pieces)};
}

std::string SourceMapText(const SourceMap &map) {
  std::string text = fmt::format("{}\nsource {}\n", kFirstLine, map.source);
  for (const FileMap &file : map.files) {
    text += fmt::format("file {} {:016X} {}\n", file.size, file.checksum, file.name);
    for (const SourcePiece &piece : file.pieces) {
      fmt::format_to(std::back_inserter(text), "{} {} {} {} {} {} {} {}\n", piece.scan,
                     piece.record, piece.line, piece.column, piece.instruction ? "SIR" : "SDR",
                     piece.header, piece.bits, piece.trailer);
    }
  }
  return text += fmt::format("{}\n", kLastLine);
}

SourceMap ReadSourceMap(const InputFile &file) {
  SourceMap map;
  std::string_view text = file.text();
  uint64_t number = 0;
  std::string_view line;
  while (line != kLastLine) {
    line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    ++number;
    if (!ReadLine(line, number, map) || (line == kLastLine && !text.empty())) {
      throw Failure(number == 1
                        ? fmt::format("this is no map; expected '{}'", kFirstLine)
                        : "this is not as tvb compile --map writes it; have it written anew",
                    fmt::format("{}:{}", file.name(), number));
    }
  }
  return map;
}

std::optional<SourcePlace> FindSource(const SourceMap &map, const FileMap &file, uint64_t scan,
                                      uint32_t bit) {
  auto piece = std::ranges::lower_bound(file.pieces, scan, {}, &SourcePiece::scan);
  for (; piece != file.pieces.end() && piece->scan == scan; ++piece) {
    const uint64_t bits = uint64_t{piece->header} + piece->bits + piece->trailer;
    if (bit < bits) {
      return PlaceIn(map, *piece, bit);
    }
    bit -= static_cast<uint32_t>(bits);
  }
  return std::nullopt;
}

std::string StatementText(std::string_view source, uint64_t line, uint64_t column) {
  std::string text;
  bool blank = false;
  for (size_t at = OffsetOf(source, line, column); at < source.size() && source[at] != ';'; ++at) {
    if (svf::IsComment(source, at)) {
      at = svf::EndOfComment(source, at);
      blank = true;
      continue;
    }
    if (svf::ClassOf(source[at]) == svf::CharacterClass::kBlank) {
      blank = true;
      continue;
    }
    text += blank && !text.empty() ? " " : "";
    text += source[at];
    blank = false;
    if (text.size() > kMaxStatement) {
      return PrintableText(text.substr(0, kMaxStatement)) + " ...";
    }
  }
  return PrintableText(text);
}

}  // namespace tool
