// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/cli/bit_row.h"
#include "tools/cli/text.h"
#include "tools/cli/text_buffer.h"
#include "tools/rehearse/mismatch.h"
#include "tools/rehearse/platform.h"
#include "tools/rehearse/target_chain.h"
#include "tools/rehearse/trace.h"
#include "tools/rehearse/verdict.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using tool::BitRow;
using tool::TextBuffer;

BitRow Row(const std::string &first_to_last) {
  BitRow row;
  for (const char bit : first_to_last) {
    row.Push(bit == '1');
  }
  return row;
}

BitRow Word(uint32_t word) {
  BitRow row;
  for (int bit = 0; bit < 32; ++bit) {
    row.Push(word >> bit & 1);
  }
  return row;
}

TEST(PlayBitRow, HexHasTheFirstBitInTheLastDigit) {
  EXPECT_EQ(Row("1").Hex(), "1");
  EXPECT_EQ(Row("0011").Hex(), "C");
  EXPECT_EQ(Row("10000").Hex(), "01");
  EXPECT_EQ(Row("00001").Hex(), "10");
  EXPECT_EQ(Row("0110000010100000").Hex(), "0506");
  EXPECT_EQ(Row("0110000010100000").Hex(4, 6), "10");
  EXPECT_EQ(Row("").Hex(), "");
}

TEST(PlayBitRow, FromFileTakesTheHighestBitFirst) {
  const uint8_t bytes[] = {0x60, 0x80};
  EXPECT_EQ(BitRow::FromFile(bytes, 8), Row("01100000"));
  EXPECT_EQ(BitRow::FromFile(bytes, 9), Row("011000001"));
}

TEST(PlayBitRow, CountsAndCombines) {
  EXPECT_EQ(Row("1011000001").Ones(), 4u);
  EXPECT_EQ(BitRow(11, true).Ones(), 11u);
  EXPECT_EQ(Row("110011001") & Row("101010101"), Row("100010001"));
  EXPECT_EQ(Row("110011001") ^ Row("101010101"), Row("011001100"));
}

std::string RegisterText(const std::vector<uint8_t> &bytes, size_t size) {
  TextBuffer buffer;
  buffer.PutRegister(bytes, size);
  return std::string(buffer.text());
}

TEST(PlayTextBuffer, RegisterHasTheFirstBitInTheLastDigit) {
  EXPECT_EQ(RegisterText({}, 0), "");
  EXPECT_EQ(RegisterText({0x70}, 3), "6");
  EXPECT_EQ(RegisterText({0x60}, 4), "6");
  EXPECT_EQ(RegisterText({0x68}, 5), "16");
  EXPECT_EQ(RegisterText({0x60}, 8), "06");
  EXPECT_EQ(RegisterText({0x60, 0xFF}, 9), "106");
  EXPECT_EQ(RegisterText({0x60, 0xAF}, 12), "506");
  EXPECT_EQ(RegisterText({0x80, 0x4C, 0x2A, 0x6E, 0x19, 0x5D, 0x3B, 0x7F}, 64), "FEDCBA9876543201");
}

TEST(PlayTextBuffer, PutsNumbersAndColumns) {
  TextBuffer buffer;
  buffer.Put('<', uint8_t{65}, -7, ' ', int64_t{-9223372036854775807 - 1}, "> ",
             uint64_t{18446744073709551615u});
  EXPECT_EQ(buffer.text(), "<65-7 -9223372036854775808> 18446744073709551615");
  buffer.Clear();
  buffer.PutLeft("ab", 4);
  buffer.PutRight("cd", 4);
  buffer.PutLeft("longer", 4);
  buffer.PutRight("longer", 4);
  EXPECT_EQ(buffer.text(), "ab    cdlongerlonger");
  buffer.Put("  ");
  buffer.EndLine();
  EXPECT_EQ(buffer.text(), "ab    cdlongerlonger\n");
}

TEST(PlayTextBuffer, GrowsAndKeepsTheText) {
  TextBuffer buffer;
  std::string expected;
  for (int i = 0; i < 1000; ++i) {
    buffer.Put("line ", i, '\n');
    expected += "line " + std::to_string(i) + '\n';
  }
  buffer.Put(std::string(5000, 'x'));
  EXPECT_EQ(buffer.text(), expected + std::string(5000, 'x'));
}

TEST(PlayDriverLog, JoinsWhatHasNoLineEnd) {
  std::vector<std::string> lines;
  tool::DriverLog log([&lines](uint64_t time, std::string_view line) {
    lines.push_back(std::to_string(time) + ' ' + std::string(line));
  });
  log.Add(1, "loading", true);
  log.Add(2, "begins\r\n", false);
  log.Add(3, "CHIP : ", false);
  log.Add(4, "0a", false);
  log.Add(5, "01", false);
  EXPECT_THAT(lines, ElementsAre("1 loading", "2 begins"));
  log.Add(6, "ends\n\n", false);
  EXPECT_THAT(lines, ElementsAre("1 loading", "2 begins", "3 CHIP : 0a01", "6 ends"));
  log.Add(7, "x", false);
  log.Flush();
  log.Flush();
  EXPECT_THAT(lines, testing::Contains("7 x").Times(1));
}

TEST(PlayIdcode, IsFoundWhereAllOfItIsCompared) {
  EXPECT_EQ(tool::FindIdcode(Word(0x0A014C35), BitRow(32, true)), 0u);
  EXPECT_EQ(tool::FindIdcode(Word(0x0A014C34), BitRow(32, true)), std::nullopt);
  EXPECT_EQ(tool::FindIdcode(Word(0x0A0140FF), BitRow(32, true)), std::nullopt);
  EXPECT_EQ(tool::FindIdcode(Word(0x0A014C35), Word(0x0FFFFFFF)), std::nullopt);
  EXPECT_EQ(tool::FindIdcode(BitRow(33, true), BitRow(33, true)), std::nullopt);
  const std::string ones(31, '1');
  EXPECT_EQ(tool::FindIdcode(Row("01" + std::string(32, '0')), Row("01" + ones + "0")), 1u);
  EXPECT_EQ(tool::FindIdcode(Row("01" + std::string(32, '0')), Row("0101" + ones)), std::nullopt);
}

TEST(PlayIdcode, IsSelectedByTheInstructionsOfTheDriver) {
  EXPECT_TRUE(tool::SelectsIdcode({0xFF, 0x60}));
  EXPECT_TRUE(tool::SelectsIdcode({0x07}));
  EXPECT_FALSE(tool::SelectsIdcode({0x06, 0xE0}));
}

TEST(PlayIdcode, TellsARevisionFromAnotherPart) {
  EXPECT_THAT(
      tool::DescribeIdcodes(0x0A014C35, 0x3A014C35),
      HasSubstr("the right part (0xA014C35) in revision 3 where the file wants revision 0"));
  EXPECT_THAT(tool::DescribeIdcodes(0x0A014C35, 0x0A015C35),
              HasSubstr("another part, manufacturer 0x61A part 0xA015"));
  EXPECT_THAT(
      tool::DescribeIdcodes(0x0A014C35, 0x0A014C34),
      HasSubstr("this looks like an IDCODE, but 0x0A014C34, which was read, cannot be one"));
}

TEST(PlayAccounting, TimesAndNumbersAreReadable) {
  EXPECT_EQ(tool::NumberText(0), "0");
  EXPECT_EQ(tool::NumberText(999), "999");
  EXPECT_EQ(tool::NumberText(1000), "1,000");
  EXPECT_EQ(tool::NumberText(12345678), "12,345,678");
  EXPECT_EQ(tool::RealText(0), "0");
  EXPECT_EQ(tool::RealText(0.5), "0.5");
  EXPECT_EQ(tool::RealText(999.125), "999.125");
  EXPECT_EQ(tool::RealText(1000), "1,000");
  EXPECT_EQ(tool::RealText(1234567.5), "1,234,567.5");
  EXPECT_EQ(tool::RealText(1e9), "1,000,000,000");
  EXPECT_EQ(tool::CountText(1, "scan"), "1 scan");
  EXPECT_EQ(tool::CountText(0, "scan"), "0 scans");
  EXPECT_EQ(tool::TimeText(999950), "1000.0 us");
  EXPECT_EQ(tool::TimeText(1000000), "1.000 ms");
  EXPECT_EQ(tool::TimeText(1234567890), "1.235 s");
  EXPECT_EQ(tool::TimeText(60000000000), "1:00 min");
  EXPECT_EQ(tool::TimeText(80000000000), "1:20 min");
  EXPECT_EQ(tool::TimeText(3599499999999), "59:59 min");
  EXPECT_EQ(tool::TimeText(3599500000000), "1:00:00 h");
  EXPECT_EQ(tool::TimeText(3723400000000), "1:02:03 h");
}

TEST(PlayAccounting, TheClockKeepsPartsOfANanosecond) {
  tool::BoardClock clock;
  clock.Work(0.75);
  EXPECT_EQ(clock.now(), 0u);
  clock.Work(0.5);
  EXPECT_EQ(clock.now(), 1u);
  clock.Wait(100);
  clock.Work(2.75);
  EXPECT_EQ(clock.now(), 104u);
  EXPECT_EQ(clock.waited(), 100u);
}

TEST(PlayAccounting, TheTableAddsUp) {
  tool::LineCounts counts;
  counts.writes[0] = 4000;
  counts.writes[1] = 30;
  counts.writes[2] = 60;
  counts.reads[0] = 4;
  counts.reads[1] = 6;
  counts.clocks[static_cast<int>(svf::TapState::kIdle)] = 1500;
  counts.clocks[static_cast<int>(svf::TapState::kDrShift)] = 490;
  counts.clocks[static_cast<int>(svf::TapState::kDrUpdate)] = 10;
  tool::BoardClock clock;
  clock.Wait(100000);
  clock.Wait(100000);
  const std::string table = tool::TimeTable(counts, clock, 250);
  EXPECT_THAT(table, HasSubstr("4,100  TCK 4,000, TMS 30, TDI 60, TDO 10\n"));
  EXPECT_THAT(table,
              HasSubstr("2,000  Shift-IR 0, Shift-DR 490, Run-Test/Idle 1,500, on the way 10\n"));
  EXPECT_THAT(table, testing::ContainsRegex("clocking +1.025 ms\n"));
  EXPECT_THAT(table, testing::ContainsRegex("waiting +200.0 us\n"));
  EXPECT_THAT(table, testing::ContainsRegex("whole +1.225 ms\n"));
}

// What comes of five clocks into Shift-IR and two bits there.
class PlayTrace : public ::testing::Test {
 protected:
  PlayTrace() : chain_(Description(), "chain"), lines_(clock_, 200) {
    lines_.Connect(chain_);
  }

  static tool::ChainDescription Description() {
    tool::ChainDescription description;
    description.devices = {{}};
    return description;
  }

  void Clocks(const std::string &tms) {
    for (const char level : tms) {
      lines_.Write(tool::Line::kTck, false);
      lines_.Write(tool::Line::kTms, level == '1');
      lines_.Write(tool::Line::kTck, true);
    }
  }

  tool::BoardClock clock_;
  tool::ChainTarget chain_;
  tool::Lines lines_;
  std::string text_;
  const tool::TextSink sink_ = [this](std::string_view text) { text_ += text; };
};

TEST_F(PlayTrace, ADumpHasEveryChangeAtItsTime) {
  tool::Vcd vcd(sink_, lines_, 200);
  lines_.WatchChanges([&vcd](const tool::LineChange &change) { vcd.Add(change); });
  Clocks("01100");
  lines_.Write(tool::Line::kTck, false);
  vcd.Finish(clock_.now());
  EXPECT_EQ(text_,
            "$version tvb play $end\n"
            "$timescale 100 ns $end\n"
            "$scope module jtag $end\n"
            "$var wire 1 ! TCK $end\n"
            "$var wire 1 \" TMS $end\n"
            "$var wire 1 # TDI $end\n"
            "$var wire 1 $ TDO $end\n"
            "$var wire 1 ( state [3] $end\n"
            "$var wire 1 ' state [2] $end\n"
            "$var wire 1 & state [1] $end\n"
            "$var wire 1 % state [0] $end\n"
            "$upscope $end\n"
            "$enddefinitions $end\n"
            "#0\n$dumpvars\n0!\n1\"\n1#\n1$\n0(\n0'\n0&\n0%\n$end\n"
            "#2\n0\"\n#4\n1!\n1%\n"
            "#6\n0!\n#8\n1\"\n#10\n1!\n1&\n0%\n"
            "#12\n0!\n#16\n1!\n1(\n0&\n1%\n"
            "#18\n0!\n#20\n0\"\n#22\n1!\n1&\n0%\n"
            "#24\n0!\n#28\n1!\n1%\n"
            "#30\n0!\n"
            "#32\n");
}

TEST_F(PlayTrace, ADumpCanLeaveOutIdleClocks) {
  tool::Vcd vcd(sink_, lines_, 200, 2);
  lines_.WatchChanges([&vcd](const tool::LineChange &change) { vcd.Add(change); });
  Clocks("0000000");
  Clocks("1");
  vcd.Finish(clock_.now());
  EXPECT_THAT(text_, testing::EndsWith("$end\n"
                                       "#2\n0\"\n#4\n1!\n1%\n"
                                       "#6\n0!\n#10\n1!\n#12\n0!\n#16\n1!\n"
                                       "#42\n0!\n#44\n1\"\n#46\n1!\n1&\n0%\n"
                                       "#48\n"));
}

TEST_F(PlayTrace, ADumpThatLeavesOutClocksEndsAsTheLinesDo) {
  tool::Vcd vcd(sink_, lines_, 200, 1);
  lines_.WatchChanges([&vcd](const tool::LineChange &change) { vcd.Add(change); });
  Clocks("00000");
  lines_.Write(tool::Line::kTck, false);
  lines_.Write(tool::Line::kTdi, false);
  lines_.Write(tool::Line::kTck, true);
  lines_.Write(tool::Line::kTck, false);
  vcd.Finish(clock_.now());
  EXPECT_THAT(text_, testing::EndsWith("#6\n0!\n#10\n1!\n"
                                       "#30\n0!\n#32\n0#\n#34\n1!\n#36\n0!\n#38\n"));
}

TEST_F(PlayTrace, ADumpCanNameTheStates) {
  tool::Vcd vcd(sink_, lines_, 200, 0, tool::StateForm::kString);
  lines_.WatchChanges([&vcd](const tool::LineChange &change) { vcd.Add(change); });
  Clocks("0");
  vcd.Finish(clock_.now());
  EXPECT_THAT(text_, testing::HasSubstr("\n$var string 1 % state $end\n"));
  EXPECT_THAT(text_, testing::EndsWith("\n1$\nsTest-Logic-Reset %\n$end\n"
                                       "#2\n0\"\n#4\n1!\nsRun-Test/Idle %\n#6\n"));
}

TEST_F(PlayTrace, ADumpCanLeaveOutTheStates) {
  tool::Vcd vcd(sink_, lines_, 200, 0, tool::StateForm::kNone);
  lines_.WatchChanges([&vcd](const tool::LineChange &change) { vcd.Add(change); });
  Clocks("0");
  vcd.Finish(clock_.now());
  EXPECT_THAT(text_, testing::HasSubstr("$var wire 1 $ TDO $end\n$upscope $end\n"));
  EXPECT_THAT(text_, testing::EndsWith("\n1$\n$end\n#2\n0\"\n#4\n1!\n#6\n"));
}

TEST_F(PlayTrace, TheFilterForViewersHasTheNamesOfTheStates) {
  std::ifstream file(TAP_STATE_FILTER);
  std::string line;
  while (std::getline(file, line) && line[0] == '#') {
  }
  for (int state = 0; state < svf::kTapStates; ++state, std::getline(file, line)) {
    EXPECT_EQ(line, fmt::format("{:X} {}", state, svf::kTapTable[state].standard_name));
  }
  EXPECT_FALSE(file);
}

TEST_F(PlayTrace, TheUnitOfADumpDividesCallsAndWaits) {
  EXPECT_EQ(tool::VcdUnit(100), 100u);
  EXPECT_EQ(tool::VcdUnit(250), 10u);
  EXPECT_EQ(tool::VcdUnit(7), 1u);
  EXPECT_EQ(tool::VcdUnit(1000), 1000u);
  EXPECT_EQ(tool::VcdUnit(1000000), 100000u);
  EXPECT_EQ(tool::VcdUnit(0.5), 1u);
  EXPECT_EQ(tool::VcdUnit(1000.5), 1u);
  EXPECT_EQ(tool::VcdUnit(0), 100000u);
}

TEST_F(PlayTrace, ScansAreListedAsSvfHasThem) {
  tool::ScanList scans(sink_);
  lines_.WatchScans([&scans](const tool::LineScan &scan) { scans.Add(scan); });
  // The last bit is shifted on the way out. TDI stays high; BYPASS captures a 0.
  Clocks("01100" + std::string("000000001") + "10");
  Clocks("100" + std::string("0001") + "10");
  Clocks("100" + std::string("00"));
  scans.Finish(lines_.scan());
  EXPECT_EQ(text_,
            "- IR 9 TDI 1FF TDO 101\n"
            "- DR 4 TDI F TDO E\n"
            "- DR 2 TDI 3 TDO 2 stopped\n");
  EXPECT_EQ(tool::ScanText(7, lines_.scan()), "7 DR 2 TDI 3 TDO 2");
}

}  // namespace
