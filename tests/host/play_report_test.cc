// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "play_bench.h"
#include "tools/cli/report.h"
#include "tools/rehearse/play_report.h"
#include "tools/rehearse/verdict.h"
#include "tools/report/data.h"
#include "tools/report/page.h"

namespace {

using test::FileBytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using tool::ReportKind;
using tool::ReportVerdict;

// Files that are played one after the other, and their report.
class ReportedRun {
 public:
  explicit ReportedRun(std::vector<tvb::Buffer> images,
                       std::optional<tool::FailAt> fail_at = std::nullopt)
      : images_(std::move(images)),
        report_("an echo", 100),
        rehearsal_(images_[0], tvb::ReadHeader(images_[0]), nullptr, {fail_at},
                   {report_.TakeLog([](uint64_t, std::string_view) {}), nullptr, nullptr}) {
    int code = 0;
    for (size_t i = 0; i < images_.size(); ++i) {
      const tool::PlayedFile file = {fmt::format("file {}", i + 1), images_[i],
                                     tvb::ReadHeader(images_[i])};
      if (code != 0) {
        report_.Skip(file);
        continue;
      }
      if (i > 0) {
        rehearsal_.Next(file.image, file.header);
      }
      report_.Begin(file, rehearsal_);
      rehearsal_.Run({[] {}});
      code = rehearsal_.mismatch() ? 1 : 0;
      report_.End(rehearsal_, code);
    }
    rehearsal_.End();
  }

  const tool::ReportData &data() {
    return report_.Finish(rehearsal_);
  }
  const tool::Rehearsal &rehearsal() const {
    return rehearsal_;
  }

 private:
  std::vector<tvb::Buffer> images_;
  tool::PlayReport report_;
  tool::Rehearsal rehearsal_;
};

// Two scans, the second of which compares, with a run-test between them.
tvb::Buffer ReportFile() {
  tvb::Writer writer;
  writer.Frequency(0);
  writer.Sir(8, FileBytes(0x31, 8));
  writer.RunTest(40);
  writer.Sdr(16, FileBytes(0xABCD, 16), FileBytes(0x1234, 16), FileBytes(0x0FFF, 16));
  return writer.Finish();
}

// A loop of three passes: a scan that compares, and a run-test.
tvb::Buffer ReportLoopFile() {
  tvb::Writer writer;
  writer.Frequency(0);
  writer.BeginLoop(3);
  writer.Sdr(8, FileBytes(0xA5, 8), FileBytes(0x3C, 8), FileBytes(0xFF, 8));
  writer.RunTest(40);
  writer.EndLoop();
  return writer.Finish();
}

// A row in short: kind, record, begin (- if not played), time, wait, clocks.
std::string RowText(const tool::ReportRecord &row) {
  return fmt::format("{} {} {} {} {} {}", static_cast<int>(row.kind), row.record,
                     row.begin ? fmt::to_string(*row.begin) : "-", row.time, row.wait, row.clocks);
}

std::vector<std::string> RowTexts(const tool::ReportFile &file) {
  std::vector<std::string> texts;
  std::transform(file.records.begin(), file.records.end(), std::back_inserter(texts), RowText);
  return texts;
}

TEST(PlayReport, TellsWhenEachRecordIsPlayed) {
  ReportedRun run({ReportFile()});
  const tool::ReportFile &file = run.data().files.at(0);
  EXPECT_EQ(file.name, "file 1");
  EXPECT_EQ(file.verdict, ReportVerdict::kHeld);
  EXPECT_EQ(file.words, "done, every comparison held");
  EXPECT_EQ(file.summary,
            "4 records, 2 scans (1 compared), 137 clocks: done, every comparison held");
  EXPECT_THAT(RowTexts(file),
              ElementsAre("0 0 0 3400 0 0", "1 0 3400 4400 0 0", "2 0 7800 14500 0 0",
                          "10 1 22300 0 0 0", "3 2 22600 4100 0 14", "5 3 26700 108200 100000 40",
                          "4 4 135200 7400 0 21", "5 5 142600 0 0 0"));
  EXPECT_EQ(file.begin, 0u);
  EXPECT_EQ(file.end, run.rehearsal().clock().now());
}

TEST(PlayReport, KnowsThatARunTestWithoutClocksWaits) {
  tvb::Writer writer;
  writer.FreshFrequency(16);
  writer.RunTest(std::chrono::microseconds(60));
  writer.Frequency(0);
  ReportedRun run({writer.Finish()});
  EXPECT_THAT(RowTexts(run.data().files.at(0)), testing::Contains("5 3 22300 100200 100000 0"));
}

TEST(PlayReport, SharesOutTheWholeTime) {
  for (const tvb::Buffer &image : {ReportFile(), ReportLoopFile()}) {
    ReportedRun run({image});
    const tool::ReportFile &file = run.data().files.at(0);
    const tool::ReportSpent &spent = file.spent;
    EXPECT_EQ(spent.waited, run.rehearsal().clock().waited());
    EXPECT_NEAR(static_cast<double>(spent.ir + spent.dr + spent.clocked + spent.waited + spent.own),
                static_cast<double>(file.end), 2000);
  }
}

TEST(PlayReport, ShowsALoopByItsFirstPassAndItsWhole) {
  ReportedRun run({ReportLoopFile()});
  const tool::ReportFile &file = run.data().files.at(0);
  EXPECT_THAT(RowTexts(file),
              ElementsAre("0 0 0 3400 0 0", "1 0 3400 4400 0 0", "2 0 7800 14500 0 0",
                          "10 1 22300 0 0 0", "11 2 22300 339300 0 0", "4 3 22600 4600 0 13",
                          "5 4 27200 108200 100000 40", "12 5 135400 0 0 0", "5 6 361600 0 0 0"));
  const auto loop = std::find_if(file.records.begin(), file.records.end(),
                                 [](const auto &row) { return row.kind == ReportKind::kLoop; });
  ASSERT_NE(loop, file.records.end());
  EXPECT_EQ(loop->value, 3u);
  EXPECT_EQ(loop->passes, 3u);
  EXPECT_EQ(loop->loop, 0u);
  EXPECT_EQ(loop[1].loop, loop->record);
  EXPECT_EQ(loop[1].scan, 1u);
  EXPECT_EQ(loop[2].loop, loop->record);
  EXPECT_EQ(loop[3].loop, 0u);
}

TEST(PlayReport, TellsWhatAScanComparesAndItsData) {
  ReportedRun run({ReportFile()});
  const tool::ReportData &data = run.data();
  const auto &rows = data.files.at(0).records;
  const auto scan = std::find_if(rows.begin(), rows.end(),
                                 [](const auto &row) { return row.kind == ReportKind::kSdr; });
  ASSERT_NE(scan, rows.end());
  EXPECT_EQ(scan->value, 16u);
  EXPECT_EQ(scan->compared, 12u);
  EXPECT_EQ(scan->scan, 2u);
  EXPECT_EQ(data.texts.all()[scan->tdi], "ABCD");
  EXPECT_EQ(data.texts.all()[scan->tdo], "1234");
  EXPECT_EQ(data.texts.all()[scan->mask], "0FFF");
}

TEST(PlayReport, CountsNoBitBeyondTheRegister) {
  tvb::Writer writer;
  writer.Sdr(4, tvb::Buffer{0xFF}, tvb::Buffer{0xFF}, tvb::Buffer{0xFF});
  const tvb::Buffer image = writer.Finish();
  std::vector<tool::ReportRecord> rows;
  tool::ReportTexts texts;
  EXPECT_EQ(tool::ListRecords(image, tvb::ReadHeader(image), 10, rows, texts), 0u);
  EXPECT_EQ(rows.at(0).compared, 4u);
  EXPECT_EQ(texts.all()[rows[0].mask], "F");
}

TEST(PlayReport, HasTheFiguresOfTheTable) {
  ReportedRun run({ReportFile(), ReportLoopFile()});
  const tool::ReportData &data = run.data();
  std::string table = "on a board, at 100 ns a pin call:\n";
  EXPECT_EQ(data.clocking + ":\n", table);
  for (const tool::ReportFigure &figure : data.figures) {
    table += fmt::format("  {:<11}{:>15}{}{}\n", figure.label, figure.text,
                         figure.detail.empty() ? "" : "  ", figure.detail);
  }
  EXPECT_EQ(table, tool::TimeTable(run.rehearsal().all_counts(), run.rehearsal().clock(), 100));
  ASSERT_EQ(data.figures.size(), 6u);
  for (size_t i = 0; i < data.figures.size(); ++i) {
    EXPECT_EQ(data.files[0].figures[i].number + data.files[1].figures[i].number,
              data.figures[i].number);
  }
}

TEST(PlayReport, ShowsWhereItFailed) {
  ReportedRun run({ReportFile(), ReportLoopFile()}, tool::FailAt{2, 5});
  const tool::ReportData &data = run.data();
  EXPECT_EQ(data.verdict, ReportVerdict::kFailed);
  EXPECT_EQ(data.words, "failed");
  EXPECT_EQ(data.files[1].verdict, ReportVerdict::kNotPlayed);
  EXPECT_EQ(data.files[1].words, "not played");
  EXPECT_FALSE(data.files[1].records[0].begin);
  ASSERT_TRUE(data.files[0].failure);
  const tool::ReportFailure &failure = *data.files[0].failure;
  EXPECT_EQ(failure.sentence, "the comparison failed in DR scan 2, bit 5: expected 1, read 0");
  EXPECT_THAT(failure.detail, HasSubstr("  differs   0020\n"));
  EXPECT_EQ(failure.record, 4u);
  EXPECT_EQ(failure.bit, 5u);
  EXPECT_EQ(failure.compared, 12u);
  EXPECT_EQ(failure.differ, 1u);
  ASSERT_EQ(failure.rows.size(), 1u);
  EXPECT_EQ(failure.rows[0].expected, "1234");
  EXPECT_EQ(failure.rows[0].read, "1214");
  EXPECT_EQ(failure.rows[0].mask, "0FFF");
  EXPECT_EQ(failure.end, data.files[0].end);
  EXPECT_FALSE(data.files[0].records.back().begin);
}

TEST(PlayReport, KeepsTheLastChangesBeforeTheBitThatFailed) {
  ReportedRun run({ReportFile()}, tool::FailAt{2, 5});
  const tool::ReportWave &wave = run.data().files.at(0).failure->wave;
  ASSERT_EQ(wave.changes.size(), 200u);
  EXPECT_EQ(wave.state, "Shift-DR");
  std::string states;
  int rises_in_shift = 0;
  std::string state = wave.state;
  bool levels[4] = {};
  std::copy(std::begin(wave.levels), std::end(wave.levels), levels);
  for (const tool::ReportChange &change : wave.changes) {
    EXPECT_NE(levels[change.line], change.level);
    levels[change.line] = change.level;
    rises_in_shift += change.line == 0 && change.level && state == "Shift-DR";
    state = change.state.empty() ? state : change.state;
    rises_in_shift = state == "Capture-DR" ? 0 : rises_in_shift;
    states += change.state.empty() ? "" : change.state + " ";
  }
  EXPECT_EQ(states,
            "Exit1-DR Update-DR Run-Test/Idle Select-DR-Scan Select-IR-Scan Capture-IR Shift-IR "
            "Exit1-IR Update-IR Run-Test/Idle Select-DR-Scan Capture-DR Shift-DR ");
  EXPECT_EQ(rises_in_shift, 5);
  EXPECT_FALSE(levels[0]);
  EXPECT_FALSE(levels[3]);
}

TEST(PlayReport, FindsTheFailedPassOfALoop) {
  ReportedRun run({ReportLoopFile()}, tool::FailAt{2, 0});
  const tool::ReportFile &file = run.data().files.at(0);
  ASSERT_TRUE(file.failure);
  EXPECT_EQ(file.failure->pass, 2u);
  const tool::ReportRecord &loop = file.records.at(file.failure->loop + 2);
  EXPECT_EQ(loop.kind, ReportKind::kLoop);
  EXPECT_EQ(loop.passes, 2u);
  EXPECT_EQ(*loop.begin + loop.time, file.failure->end);
  EXPECT_GT(file.failure->begin, *file.records.at(file.failure->record + 2).begin);
}

TEST(PlayReport, PlaysSeveralFilesOnOneClock) {
  ReportedRun run({ReportFile(), ReportLoopFile()});
  const tool::ReportData &data = run.data();
  EXPECT_EQ(data.verdict, ReportVerdict::kHeld);
  EXPECT_GT(data.files[0].end, 0u);
  EXPECT_EQ(data.files[1].begin, data.files[0].end);
  EXPECT_EQ(data.files[1].records[0].begin, data.files[1].begin);
  EXPECT_EQ(data.files[1].end, run.rehearsal().clock().now());
}

TEST(PlayReport, ListsSoManyRecordsAndTheOneThatFailed) {
  tvb::Writer writer;
  for (uint64_t i = 0; i < tool::kMaxReportRecords + 10; ++i) {
    writer.Hir(0, {});
  }
  writer.Sdr(8, FileBytes(0, 8), FileBytes(1, 8), FileBytes(1, 8));
  ReportedRun run({writer.Finish()}, tool::FailAt{1, 0});
  const tool::ReportFile &file = run.data().files.at(0);
  constexpr uint64_t kFailed = tool::kMaxReportRecords + 11;
  EXPECT_EQ(file.failure->record, kFailed);
  EXPECT_EQ(file.records.back().record, kFailed);
  EXPECT_EQ(file.records.back().begin, file.failure->begin);
  EXPECT_EQ(file.records[file.records.size() - 2].record, tool::kMaxReportRecords);
  EXPECT_EQ(file.unlisted, 11u);
}

TEST(PlayReport, ShowsOfALongScanTheBitsThatDiffer) {
  tool::Mismatch mismatch;
  mismatch.expected = tool::BitRow(10000, false);
  mismatch.mask = tool::BitRow(10000, true);
  for (size_t bit = 0; bit < 10000; ++bit) {
    mismatch.read.Push(bit == 5000 || bit == 9990);
  }
  const std::vector<tool::ReportBits> rows = tool::FailedBits(mismatch);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].first, 4992u);
  EXPECT_EQ(rows[0].read, "0000000000000100");
  EXPECT_EQ(rows[1].first, 9984u);
  EXPECT_EQ(rows[1].count, 16u);
  EXPECT_EQ(rows[1].read, "0040");
  mismatch.read = tool::BitRow(10000, true);
  EXPECT_EQ(tool::FailedBits(mismatch).size(), 64u);
}

TEST(PlayReport, AbbreviatesLongData) {
  EXPECT_EQ(tool::AbbreviatedHex(FileBytes(0x5A3, 12), 12), "5A3");
  tvb::Buffer bytes(40, 0x00);
  bytes[0] = 0x80;  // bit 0
  EXPECT_EQ(tool::AbbreviatedHex(bytes, 160), std::string(39, '0') + "1");
  bytes[20] = 0x80;  // bit 160
  EXPECT_EQ(tool::AbbreviatedHex(bytes, 161),
            "1" + std::string(19, '0') + "…" + std::string(19, '0') + "1");
  EXPECT_EQ(tool::AbbreviatedHex(bytes, 165),
            "01" + std::string(18, '0') + "…" + std::string(19, '0') + "1");
  bytes[39] = 0x01;  // bit 319
  EXPECT_EQ(tool::AbbreviatedHex(bytes, 320),
            "8" + std::string(19, '0') + "…" + std::string(19, '0') + "1");
}

TEST(PlayReport, HearsMessages) {
  std::vector<std::string> heard;
  {
    tool::MessageListener listener(
        [&](std::string_view kind, std::string_view place, std::string_view text) {
          heard.push_back(fmt::format("{}|{}|{}", kind, place, text));
        });
    tool::Warning("a file", "is \x1B[1mbold");
  }
  tool::Note("a file", "nobody hears this");
  EXPECT_THAT(heard, ElementsAre("warning|a file|is \\x1B[1mbold"));
}

// The page of `data`, and the objects of its script elements: the run, then the files.
struct ShownPage {
  explicit ShownPage(const tool::ReportData &data) {
    tool::WritePage(data, [this](std::string_view part) { text += part; });
    const std::string open = "<script type=\"application/json\"";
    for (size_t at = text.find(open); at != std::string::npos; at = text.find(open, at + 1)) {
      const size_t begin = text.find('>', at) + 1;
      objects.push_back(
          nlohmann::json::parse(text.substr(begin, text.find("</script>", begin) - begin)));
    }
  }

  std::string text;
  std::vector<nlohmann::json> objects;
};

size_t CountOf(const std::string &text, const std::string &part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(PlayReport, PutsTheDataIntoThePage) {
  ReportedRun run({ReportFile(), ReportLoopFile()});
  const ShownPage page(run.data());
  ASSERT_EQ(page.objects.size(), 3u);
  EXPECT_EQ(page.objects[0]["verdict"], "held");
  EXPECT_EQ(page.objects[0]["target"], "an echo");
  EXPECT_EQ(page.objects[0]["kinds"][static_cast<int>(ReportKind::kLoop)], "LOOP");
  EXPECT_EQ(page.objects[1]["name"], "file 1");
  EXPECT_TRUE(page.objects[1]["failure"].is_null());
  for (const auto &column : page.objects[2]["records"]) {
    EXPECT_EQ(column.size(), run.data().files[1].records.size());
  }
}

TEST(PlayReport, LetsNoTextOutOfItsPlace) {
  tool::ReportData data;
  data.files.emplace_back().name = "plain";
  const ShownPage plain(data);
  const std::string text = "</script><script>alert(1)</script> <!-- \u2028 \" \\ & ' \n";
  data.files[0].name = text;
  data.target = "\xFFnot UTF-8";
  data.messages.push_back({"error", text, text});
  const ShownPage page(data);
  EXPECT_EQ(CountOf(page.text, "<script"), CountOf(plain.text, "<script"));
  EXPECT_EQ(CountOf(page.text, "</script"), CountOf(plain.text, "</script"));
  EXPECT_EQ(CountOf(page.text, "<!--"), CountOf(plain.text, "<!--"));
  EXPECT_EQ(CountOf(page.text,
                    "&lt;/script>&lt;script>alert(1)&lt;/script> &lt;!-- \u2028 \" \\ &amp; '"),
            3u);
  ASSERT_EQ(page.objects.size(), 2u);
  EXPECT_EQ(page.objects[1]["name"], text);
  EXPECT_EQ(page.objects[0]["messages"][0]["text"], text);
  EXPECT_EQ(page.objects[0]["target"], "\uFFFDnot UTF-8");
}

TEST(PlayReport, ShowsTheSourceOfAFailure) {
  tool::ReportData data;
  tool::ReportFailure &failure = data.files.emplace_back().failure.emplace();
  EXPECT_TRUE(ShownPage(data).objects[1]["failure"]["source"].is_null());
  failure.source = tool::ReportSource{"a.svf", 7, 3, "SDR 8 TDI (00);"};
  EXPECT_EQ(ShownPage(data).objects[1]["failure"]["source"].dump(),
            R"({"column":3,"file":"a.svf","line":7,"text":"SDR 8 TDI (00);"})");
}

TEST(PlayReport, AsksForNothing) {
  const ShownPage page(tool::ReportData{});
  EXPECT_THAT(page.text, HasSubstr("content=\"default-src 'none'; "));
  EXPECT_THAT(page.text, Not(HasSubstr("http://www.w3.org/1999")));
  for (const char *part : {" src=", " href=", "url(", "@import", "fetch(", "innerHTML", "eval("}) {
    EXPECT_THAT(page.text, Not(HasSubstr(part)));
  }
}

}  // namespace
