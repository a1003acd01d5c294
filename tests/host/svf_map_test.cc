// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Which statement each bit of a scan comes from.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "tools/cli/command.h"
#include "tools/cli/source_map.h"
#include "tools/compile/compilation.h"
#include "tvb/header.h"
#include "tvb/play_order.h"

namespace {

// A text compiled in memory: its first file.
struct Mapped {
  explicit Mapped(std::string_view text, const tool::CompileOptions &options = {})
      : svf("in.svf", {text.begin(), text.end()}),
        notes("in.svf", svf.text(), true),
        files(svf.text()) {
    tool::Compiler compiler(options, notes, [this](std::optional<size_t>) { return files.Next(); });
    compiler.WatchScans(
        [this](auto number, auto which, auto pieces) { files.AddScan(number, which, pieces); });
    tool::CompileText(compiler, svf, notes);
    map.source = "in.svf";
    map.files.push_back(files.TakeMap(0, "out.tvb"));
    image = files.TakeImage(0);
  }

  // "LINE:COLUMN REGISTER BIT" of a bit of a scan; "" if it is not of the text.
  std::string Place(uint64_t scan, uint32_t bit) const {
    const auto place = tool::FindSource(map, map.files.front(), scan, bit);
    return place ? place->where.substr(map.source.size() + 1) + " " + std::string(place->reg) +
                       " " + std::to_string(place->bit)
                 : "";
  }

  tool::InputFile svf;
  tool::SourceNotes notes;
  tool::CompiledFiles files;
  tool::SourceMap map;
  tvb::Buffer image;
};

std::string ReadError(const std::string &text) {
  try {
    ReadSourceMap(tool::InputFile("m", {text.begin(), text.end()}));
    return "";
  } catch (const tool::Failure &failure) {
    return failure.place();
  }
}

TEST(SvfMap, KnowsPadsAndTheScanItself) {
  const Mapped mapped(
      "HIR 8 TDI (FF); TIR 8 TDI (FF); HDR 1 TDI (0); TDR 2 TDI (0);\n"
      "SIR 8 TDI (06);\n"
      " SDR 4 TDI (5);");
  EXPECT_EQ("", mapped.Place(1, 0)) << "tells the target's place";
  EXPECT_EQ("2:1 HIR 7", mapped.Place(2, 7));
  EXPECT_EQ("2:1 SIR 0", mapped.Place(2, 8));
  EXPECT_EQ("2:1 TIR 7", mapped.Place(2, 23));
  EXPECT_EQ("", mapped.Place(2, 24));
  EXPECT_EQ("3:2 HDR 0", mapped.Place(3, 0));
  EXPECT_EQ("3:2 SDR 3", mapped.Place(3, 4));
  EXPECT_EQ("3:2 TDR 1", mapped.Place(3, 6));
  EXPECT_EQ("", mapped.Place(4, 0));
}

TEST(SvfMap, KnowsThePiecesOfAScanThatResumes) {
  const Mapped mapped(
      "ENDDR DRPAUSE; HDR 1 TDI (0);\r\nSDR 4 TDI (5); SDR 3 TDI (0);\r\nSDR 2 TDI (0); STATE "
      "IDLE;");
  EXPECT_EQ("2:1 HDR 0", mapped.Place(2, 0));
  EXPECT_EQ("2:1 SDR 3", mapped.Place(2, 4));
  EXPECT_EQ("2:16 HDR 0", mapped.Place(2, 5));
  EXPECT_EQ("3:1 SDR 1", mapped.Place(2, 11));
  EXPECT_EQ("", mapped.Place(2, 12));
}

TEST(SvfMap, FollowsEveryPassOfALoop) {
  std::string text;
  for (int line = 0; line < 50; ++line) {
    text += "SDR 32 TDI (01234567);\nSDR 32 TDI (89ABCDEF);\n";
  }
  const Mapped mapped(text);
  uint64_t scans = 0;
  tvb::PlayOrder order(mapped.image, tvb::ReadHeader(mapped.image));
  uint64_t passes = 1;
  while (const auto played = order.Next()) {
    if (played->record.IsShift()) {
      ++scans;
      passes = played->passes;
      EXPECT_EQ(std::to_string(scans) + ":1 SDR 0", mapped.Place(scans, 0));
      EXPECT_EQ(played->record.index, mapped.map.files[0].pieces[scans - 1].record);
    }
  }
  EXPECT_EQ(100u, scans);
  EXPECT_EQ(50u, passes);
}

TEST(SvfMap, IsReadAsItIsWritten) {
  const Mapped mapped("SIR 8 TDI (06);\nHDR 1 TDI (0); SDR 4 TDI (5);");
  const std::string text = SourceMapText(mapped.map);
  EXPECT_EQ(text.substr(text.find("\n1 ")), "\n1 6 1 1 SIR 0 8 0\n2 7 2 16 SDR 1 4 0\nend\n");
  const tool::SourceMap read = ReadSourceMap(tool::InputFile("m", {text.begin(), text.end()}));
  EXPECT_EQ(text, SourceMapText(read));
  EXPECT_NE(nullptr, read.Find(mapped.image));
  tvb::Buffer other = mapped.image;
  other.back() ^= 1;
  EXPECT_EQ(nullptr, read.Find(other));
}

TEST(SvfMap, RefusesAnyPartOfAMap) {
  const Mapped mapped("SIR 8 TDI (06);\nSDR 4 TDI (5);");
  const std::string text = SourceMapText(mapped.map);
  EXPECT_EQ("", ReadError(text.substr(0, text.size() - 1))) << "only the last line end is missing";
  for (size_t size = 0; size < text.size() - 1; ++size) {
    EXPECT_NE("", ReadError(text.substr(0, size))) << size;
  }
  EXPECT_EQ("m:6", ReadError(text + "1 1 1 1 SDR 0 8 0\n")) << "more after the end";
  EXPECT_EQ("m:1", ReadError("tvb-map 2\nsource x\nend\n"));
  EXPECT_EQ("m:3", ReadError("tvb-map 1\nsource x\n1 1 1 1 SDR 0 8 0\nend\n")) << "of no file";
  EXPECT_EQ("m:5", ReadError("tvb-map 1\nsource x\nfile 1 0 y\n2 1 1 1 SDR 0 8 0\n"
                             "1 1 1 1 SDR 0 8 0\nend\n"))
      << "not in order";
  EXPECT_EQ("m:4", ReadError("tvb-map 1\nsource x\nfile 1 0 y\n1 1 1 1 SDR 0 8 0 9\nend\n"));
  EXPECT_EQ("m:4", ReadError("tvb-map 1\nsource x\nfile 1 0 y\n1 1 1 1 SDR 0 -8 0\nend\n"));
}

TEST(SvfMap, ShowsAStatementOnOneLine) {
  const std::string text = "! one\r\nSDR 8 ! two ;\r\n\tTDI (\r\n  5A)\r\n  ; SIR 8 TDI (06)";
  EXPECT_EQ("SDR 8 TDI ( 5A)", tool::StatementText(text, 2, 1));
  EXPECT_EQ("SIR 8 TDI (06)", tool::StatementText(text, 5, 5));
  EXPECT_EQ("", tool::StatementText(text, 9, 1));
  EXPECT_EQ("", tool::StatementText(text, 5, 99));
  const std::string data(100, 'F');
  EXPECT_EQ("SDR 400 TDI (" + data.substr(0, 59) + " ...",
            tool::StatementText("SDR 400 TDI (" + data + ");", 1, 1));
}

}  // namespace
