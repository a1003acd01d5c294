// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What SVF statements become in a TVB file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "svf_bench.h"

namespace {

using test::Compiled;
using test::CompileError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// Lengths of 0 for the four pads, and the frequency unset.
constexpr size_t kPreamble = 5;

std::vector<std::string> Records(std::string_view text, const tool::CompileOptions &options = {}) {
  return Compiled(text, options).Texts(kPreamble);
}

TEST(SvfCompile, BeginsWithACleanPlayerAndEndsHarmlessly) {
  EXPECT_THAT(Compiled("SIR 8 TDI (06);").Texts(),
              ElementsAre("PAD 12 0", "PAD 10 0", "PAD 11 0", "PAD 9 0", "FREQUENCY 0", "SIR 8 06",
                          "IDLE"));
}

TEST(SvfCompile, ComparesUnderTheRememberedMask) {
  EXPECT_THAT(
      Records("SDR 8 TDI (00) TDO (35) MASK (0F); SDR 8 TDI (01); SDR 8 TDO (12);"
              "SDR 16 TDI (0000) TDO (1234);"),
      ElementsAre("SDR 8 00 35/0F", "SDR 8 01", "SDR 8 01 12/0F", "SDR 16 0000 1234/FFFF", "IDLE"));
}

TEST(SvfCompile, DropsAComparisonOfNothing) {
  EXPECT_THAT(Records("SDR 8 TDI (00) TDO (35) MASK (00);"), ElementsAre("SDR 8 00", "IDLE"));
}

TEST(SvfCompile, PutsPadsIntoTheScansThemselves) {
  const std::string pads = "HIR 8 TDI (FF); TIR 4 TDI (A); HDR 1 TDI (1); TDR 2 TDI (1);";
  EXPECT_THAT(
      Compiled(pads + "SDR 8 TDI (00) TDO (35); SIR 8 TDI (06) TDO (01) MASK (03);").Texts(),
      ElementsAre("SIR 32 FFFF06FF", "PAD 12 0", "PAD 10 0", "PAD 11 0", "PAD 9 0", "FREQUENCY 0",
                  "SDR 11 201 06A/1FE", "SIR 20 A06FF 00100/00300", "IDLE"));
}

TEST(SvfCompile, TakesPadsAwayAgain) {
  EXPECT_THAT(Compiled("HDR 3 TDI (7); SDR 8 TDI (12); HDR 0; SDR 8;").Texts(kPreamble + 1),
              ElementsAre("SDR 11 097", "SDR 8 12", "IDLE"));
}

TEST(SvfCompile, OpensWithTheTargetsPlace) {
  // The last byte of the number goes out first, to the device nearest TDO.
  tool::CompileOptions options;
  options.chain = tvb::ChainPlace{1, 2};
  EXPECT_EQ(Compiled("SDR 8 TDI (12);", options).Texts()[0], "SIR 32 FF06FFFF");
  options.chain = tvb::ChainPlace{0, 0};
  EXPECT_EQ(Compiled("SDR 8 TDI (12);", options).Texts()[0], "PAD 12 0");
  EXPECT_EQ(Compiled("HIR 8 TDI (FF); HDR 1 TDI (0); SDR 8 TDI (12);").Texts()[0], "SIR 16 06FF");
  EXPECT_EQ(Compiled("RUNTEST 5 TCK; TIR 8 TDI (FF); TDR 1 TDI (0); SDR 8 TDI (12);").Texts()[0],
            "SIR 16 FF06");
}

TEST(SvfCompile, OpensWithTheInstructionThatTheFileReadsTheIdcodeBy) {
  const std::string pads = "HIR 8 TDI (FF); HDR 1 TDI (0); RUNTEST 1 TCK;";
  EXPECT_EQ(Compiled(pads + "SIR 8 TDI (E0);").Texts()[0], "SIR 16 E0FF");
  EXPECT_EQ(Compiled(pads + "SIR 8 TDI (E1);").Texts()[0], "SIR 16 06FF");
  EXPECT_EQ(Compiled(pads + "SDR 8 TDI (E0);").Texts()[0], "SIR 16 06FF");
}

TEST(SvfCompile, TakesAFirstScanThatTellsThePlaceForTheOpening) {
  EXPECT_THAT(Compiled("SIR 24 TDI (FF10FF); SIR 24 TDI (FF20FF);").Texts(),
              ElementsAre("SIR 24 FF10FF", "PAD 12 0", "PAD 10 0", "PAD 11 0", "PAD 9 0",
                          "FREQUENCY 0", "SIR 24 FF20FF", "IDLE"));
  EXPECT_EQ(Compiled("HIR 8 TDI (FF); HDR 1 TDI (0); SIR 8 TDI (10);").Texts().size(), 7u);
  // Not if it compares, comes late, says another place or none.
  EXPECT_EQ(Compiled("SIR 16 TDI (FF10) TDO (0101);").Texts()[0], "PAD 12 0");
  EXPECT_EQ(Compiled("RUNTEST 1 TCK; SIR 16 TDI (FF10);").Texts()[0], "PAD 12 0");
  EXPECT_EQ(Compiled("SIR 16 TDI (1010);").Texts()[0], "PAD 12 0");
  EXPECT_EQ(Compiled("SIR 16 TDI (FFFF);").Texts()[0], "PAD 12 0");
  EXPECT_EQ(Compiled("SIR 12 TDI (FF1);").Texts()[0], "PAD 12 0");
  tool::CompileOptions options;
  options.chain = tvb::ChainPlace{0, 1};
  EXPECT_EQ(Compiled("SIR 16 TDI (FF10);", options).Texts()[0], "SIR 16 06FF");
}

TEST(SvfCompile, TellsThePlaceHoweverLateTheFileStatesIt) {
  std::string text;
  for (int i = 0; i < 3000; ++i) {
    text += "RUNTEST " + std::to_string(4000 + i) + " TCK;\n";
  }
  const auto texts = Compiled(text + "HIR 8 TDI (FF); HDR 1 TDI (0); SDR 8 TDI (12);").Texts();
  EXPECT_EQ(texts.front(), "SIR 16 06FF");
  EXPECT_EQ(texts[5], "FREQUENCY 0");
  EXPECT_EQ(texts[6], "RUNTEST 4000 TCK");
}

TEST(SvfCompile, SetsTheFrequencyAnewWhenItRises) {
  EXPECT_THAT(Records("FREQUENCY 1E6 HZ; SIR 8 TDI (06); FREQUENCY 1E6 HZ; RUNTEST 7 TCK;"
                      "FREQUENCY 2E6 HZ; SIR 8; FREQUENCY; SIR 8 TDI (07); FREQUENCY 5 HZ;"),
              ElementsAre("FREQUENCY 1000000", "SIR 8 06", "RUNTEST 7 TCK", "FREQUENCY 0",
                          "FREQUENCY 2000000", "SIR 8 06", "FREQUENCY 0", "SIR 8 07", "FREQUENCY 5",
                          "IDLE"));
}

TEST(SvfCompile, ForgetsThePlayersOwnFrequency) {
  // The first run-test has made it 1 MHz.
  EXPECT_THAT(Records("RUNTEST 5 TCK; FREQUENCY 2E6 HZ;"),
              ElementsAre("RUNTEST 5 TCK", "FREQUENCY 0", "FREQUENCY 2000000", "IDLE"));
}

TEST(SvfCompile, BoundsTheFrequency) {
  EXPECT_THAT(Records("FREQUENCY 1E12 HZ; SIR 8 TDI (06);"),
              ElementsAre("FREQUENCY 2147483647", "SIR 8 06", "IDLE"));
  EXPECT_THAT(Records("FREQUENCY 1.9 HZ; SIR 8 TDI (06);"),
              ElementsAre("FREQUENCY 1", "SIR 8 06", "IDLE"));
}

TEST(SvfCompile, WritesTheLongerOfTimeAndCount) {
  EXPECT_THAT(
      Records("FREQUENCY 1E6 HZ; RUNTEST 100 TCK 1E-3 SEC; RUNTEST 2000 TCK 1E-3 SEC;"
              "RUNTEST 1000 TCK 1E-3 SEC; RUNTEST 0.02 SEC; RUNTEST 10021E-6 SEC;"
              "RUNTEST 1.5E-6 SEC; RUNTEST 0 TCK; RUNTEST 0 SEC;"),
      ElementsAre("FREQUENCY 1000000", "RUNTEST 1000 us", "RUNTEST 2000 TCK", "RUNTEST 1000 TCK",
                  "RUNTEST 20000 us", "RUNTEST 10021 us", "RUNTEST 2 TCK", "IDLE"));
}

TEST(SvfCompile, CountsClocksWhereATimeWouldLoseOne) {
  EXPECT_THAT(Records("FREQUENCY 32768 HZ; RUNTEST 0.01 SEC; FREQUENCY 10 HZ; RUNTEST 1E-3 SEC;"),
              ElementsAre("FREQUENCY 32768", "RUNTEST 328 TCK", "FREQUENCY 0", "FREQUENCY 10",
                          "RUNTEST 1 TCK", "IDLE"));
}

TEST(SvfCompile, WritesALongWaitInPieces) {
  // 20 ms at 1 MHz and at 1 kHz; at 10 Hz no piece can be shorter than a clock.
  EXPECT_THAT(
      Records("RUNTEST 50021E-6 SEC; FREQUENCY 1E3 HZ; RUNTEST 1 SEC; RUNTEST 20 TCK;"
              "RUNTEST 21 TCK; FREQUENCY 10 HZ; RUNTEST 0.5 SEC;"),
      ElementsAre("LOOP 2", "RUNTEST 20000 TCK", "ENDLOOP", "RUNTEST 10021 TCK", "FREQUENCY 0",
                  "FREQUENCY 1000", "LOOP 52", "RUNTEST 20 TCK", "ENDLOOP", "RUNTEST 1 TCK",
                  "FREQUENCY 0", "FREQUENCY 10", "LOOP 5", "RUNTEST 1 TCK", "ENDLOOP", "IDLE"));
  EXPECT_THAT(Records("FREQUENCY 1 HZ; RUNTEST 3000000 TCK;"),
              ElementsAre("FREQUENCY 1", "LOOP 750000", "RUNTEST 4 TCK", "ENDLOOP", "IDLE"));
  // 23 days at the highest frequency: no piece has more clocks than the player counts.
  EXPECT_THAT(Records("FREQUENCY 2147483647 HZ; RUNTEST 2000000 SEC;"),
              ElementsAre("FREQUENCY 2147483647", "LOOP 2000000",
                          HasSubstr("RUNTEST 2147450869 TCK"), "ENDLOOP", "IDLE"));
  tool::CompileOptions options;
  options.longest_wait = 30000;
  EXPECT_THAT(Records("RUNTEST 50 TCK 0.05 SEC;", options),
              ElementsAre("RUNTEST 30000 TCK", "RUNTEST 20000 TCK", "IDLE"));
  options.longest_wait = 0;
  EXPECT_THAT(Records("RUNTEST 50021E-6 SEC;", options),
              ElementsAre("RUNTEST 50 ms 21 us", "IDLE"));
}

TEST(SvfCompile, SplitsMoreClocksThanThePlayerCounts) {
  tool::CompileOptions options;
  options.longest_wait = 0;
  EXPECT_THAT(Records("RUNTEST 4294967295 TCK;", options),
              ElementsAre("LOOP 2", "RUNTEST 2147450869 TCK 32778 TCK", "ENDLOOP", "RUNTEST 1 TCK",
                          "IDLE"));
}

TEST(SvfCompile, RemembersTheStatesOfRunTests) {
  EXPECT_EQ(CompileError("SIR 8 TDI (06);\nRUNTEST IDLE 1 TCK ENDSTATE IDLE; RUNTEST IRPAUSE 1 TCK "
                         "ENDSTATE IDLE; RUNTEST 2 TCK;")
                .substr(0, 5),
            "2:35:");
  tool::CompileOptions options;
  options.pause_as_idle = true;
  EXPECT_THAT(Records("RUNTEST IRPAUSE 1 TCK; RUNTEST 2 TCK;", options),
              ElementsAre("RUNTEST 1 TCK", "RUNTEST 2 TCK", "IDLE"));
}

TEST(SvfCompile, FreesBitsToCompress) {
  const Compiled compiled(
      "SDR 64 TDI (0123456789ABCDEF) SMASK (0000000000000000);"
      "SDR 64 TDI (FF123456789ABCFF) SMASK (FF000000000000FF);");
  EXPECT_EQ(compiled.Hex(compiled.records[kPreamble], tvb::kTagTdi), "0000000000000000");
  EXPECT_EQ(compiled.Hex(compiled.records[kPreamble + 1], tvb::kTagTdi), "FFFFFFFFFFFFFFFF");
}

TEST(SvfCompile, KeepsEveryBitThatMatters) {
  const Compiled compiled(
      "SDR 44 TDI (12345678ABC) SMASK (F0F0FFFFFF1) TDO (A5A5A5A5A5A) MASK (0F00FF0000F);");
  const tvb::RecordView &scan = compiled.records[kPreamble];
  const auto number = [&](tvb::Tag tag) {
    return std::stoull(compiled.Hex(scan, tag), nullptr, 16);
  };
  EXPECT_EQ(number(tvb::kTagTdi) & 0xF0F0FFFFFF1, 0x12345678ABCu & 0xF0F0FFFFFF1);
  EXPECT_EQ(number(tvb::kTagTdo) & 0x0F00FF0000F, 0xA5A5A5A5A5Au & 0x0F00FF0000F);
  EXPECT_EQ(number(tvb::kTagMask), 0x0F00FF0000Fu);
}

TEST(SvfCompile, KeepsFreeBitsWhereNothingIsCompressed) {
  tool::CompileOptions options;
  options.plain = true;
  EXPECT_THAT(Records("SDR 32 TDI (12345678) SMASK (0);", options),
              ElementsAre("SDR 32 12345678", "IDLE"));
}

TEST(SvfCompile, ForcesAnEncoding) {
  tool::CompileOptions options;
  options.blocks = tvb::BlockChoice::As(tvb::Encoding::kLzw);
  const Compiled compiled("SDR 8 TDI (12) TDO (34);", options);
  for (const tvb::FieldView &field : compiled.records[kPreamble].fields) {
    EXPECT_EQ(field.block->mode, 4);
  }
}

TEST(SvfCompile, FoldsRepeats) {
  std::string text;
  for (int i = 0; i < 50; ++i) {
    text += "SIR 8 TDI (40); SDR 8 TDI (00) TDO (01); RUNTEST 100 TCK;\n";
  }
  EXPECT_THAT(Records(text), ElementsAre("LOOP 50", "SIR 8 40", "SDR 8 00 01/FF", "RUNTEST 100 TCK",
                                         "ENDLOOP", "IDLE"));
}

TEST(SvfCompile, TakesTheLongestScan) {
  EXPECT_THAT(CompileError("SDR 4194298 TDI (0);"), "");
  EXPECT_THAT(CompileError("SDR 4194299 TDI (0);"),
              StartsWith("1:5: this SDR takes 4194304 clocks"));
  EXPECT_THAT(CompileError("SIR 4194297 TDI (0);"), "");
  EXPECT_THAT(CompileError("SIR 4194298 TDI (0);"),
              StartsWith("1:5: this SIR takes 4194304 clocks"));
  EXPECT_THAT(CompileError("HDR 4194290 TDI (0); TDR 8 TDI (0); SDR 1 TDI (0);"),
              StartsWith("1:41: this SDR takes"));
}

TEST(SvfCompile, ShiftsPadsWithoutAScanOfItsOwn) {
  EXPECT_THAT(Compiled("HDR 3 TDI (5); SDR 0;").Texts(kPreamble + 1),
              ElementsAre("SDR 3 5", "IDLE"));
}

TEST(SvfCompile, LetsResetsBeWhereTheyChangeNothing) {
  const char *kText =
      "STATE RESET; RUNTEST 5 TCK; STATE RESET; STATE RESET IDLE; SIR 8 TDI (06); STATE RESET;";
  EXPECT_THAT(Records(kText), ElementsAre("RUNTEST 5 TCK", "SIR 8 06", "IDLE"));
}

TEST(SvfCompile, BeginsNoFileForARunTestOfNoClocks) {
  const char *kText = "SIR 8 TDI (06); STATE RESET; RUNTEST 0 TCK; RUNTEST 0 SEC;";
  EXPECT_EQ(Compiled(kText).files.size(), 1u);
  EXPECT_EQ(Compiled(std::string(kText) + "RUNTEST 1E-9 SEC;").files.size(), 2u);
}

TEST(SvfCompile, BeginsAnotherFileAtAReset) {
  const Compiled compiled(
      "HIR 8 TDI (FF); HDR 1 TDI (0); ENDDR DRPAUSE; ENDIR IRPAUSE; FREQUENCY 2E6 HZ;"
      "SIR 8 TDI (06); SDR 8 TDI (12) TDO (34) MASK (F0) SMASK (0F);"
      "STATE RESET; STATE IDLE; RUNTEST 5 TCK; STATE RESET; RUNTEST 6 TCK;"
      "SDR 8 TDO (56); SIR 8; RUNTEST 7 TCK ENDSTATE RESET; FREQUENCY; RUNTEST IDLE 8 TCK;"
      "STATE IDLE IDLE DRSELECT IRSELECT RESET IDLE IDLE IDLE; SIR 8;"
      "STATE IDLE IDLE IDLE DRSELECT IRSELECT RESET IDLE IDLE IDLE;");
  ASSERT_EQ(compiled.files.size(), 4u);
  const std::vector<std::string> start = {"PAD 12 0", "PAD 10 0", "PAD 11 0", "PAD 9 0",
                                          "FREQUENCY 0"};
  const auto texts = [&](size_t file, bool opened) {
    const auto all = compiled.files[file]->Texts();
    const size_t first = opened ? 1 : 0;
    EXPECT_TRUE(std::equal(start.begin(), start.end(), all.begin() + static_cast<long>(first)));
    return compiled.files[file]->Texts(first + kPreamble);
  };
  EXPECT_EQ(compiled.files[0]->Texts()[0], "SIR 16 06FF");
  EXPECT_THAT(texts(0, true), ElementsAre("FREQUENCY 2000000", "SDR 9 024 068/1E0", "IDLE"));
  EXPECT_EQ(compiled.files[1]->Texts()[0], "SIR 16 06FF");
  EXPECT_THAT(texts(1, true),
              ElementsAre("FREQUENCY 2000000", "RUNTEST 5 TCK", "RUNTEST 6 TCK",
                          "SDR 9 024 0AC/1E0", "SIR 16 06FF", "RUNTEST 7 TCK", "IDLE"));
  // A reset before the first scan of a file changes nothing.
  EXPECT_EQ(compiled.files[2]->Texts()[0], "SIR 16 06FF");
  EXPECT_THAT(texts(2, true), ElementsAre("RUNTEST 8 TCK", "RUNTEST 4 TCK", "SIR 16 06FF",
                                          "RUNTEST 2 TCK", "IDLE"));
  EXPECT_EQ(compiled.files[3]->Texts()[0], "SIR 16 06FF");
  EXPECT_THAT(texts(3, true), ElementsAre("RUNTEST 2 TCK", "IDLE"));
  tool::CompileOptions options;
  options.split = false;
  EXPECT_EQ(CompileError("SIR 8 TDI (06);\n STATE RESET; SIR 8;", options),
            "2:2: the TAP is reset in the middle of the file, but the player resets it at a file's "
            "start only; take this reset out, or do without --no-split");
}

TEST(SvfCompile, LetsPausesBeThatGoOnThroughUpdate) {
  const char *kText =
      "ENDIR IRPAUSE; ENDDR DRPAUSE; SIR 8 TDI (06); SDR 8 TDI (00); SIR 8; RUNTEST 3 TCK;"
      "SDR 8; STATE DREXIT2 DRUPDATE IDLE; SDR 8 TDI (01); STATE IDLE; SIR 8 TDI (07);"
      "STATE IREXIT2 IRUPDATE DRSELECT IRSELECT RESET;";
  EXPECT_THAT(Records(kText), ElementsAre("SIR 8 06", "SDR 8 00", "SIR 8 06", "RUNTEST 3 TCK",
                                          "SDR 8 00", "SDR 8 01", "SIR 8 07", "IDLE"));
}

TEST(SvfCompile, ClocksAPathInIdle) {
  EXPECT_THAT(Records("SIR 8 TDI (06); STATE IDLE IDLE IDLE; STATE IDLE;"),
              ElementsAre("SIR 8 06", "RUNTEST 3 TCK", "IDLE"));
  // The first statement finds the TAP in no known state, so its first IDLE may be none in IDLE.
  EXPECT_THAT(Records("STATE IDLE IDLE IDLE; SIR 8 TDI (06);"),
              ElementsAre("RUNTEST 2 TCK", "SIR 8 06", "IDLE"));
  for (const char *start : {"STATE IDLE;", "STATE RESET IDLE;", "RUNTEST 0 TCK;",
                            "TRST ON; TRST Z;"
                            "STATE IDLE;"}) {
    EXPECT_THAT(Records(start + std::string("STATE IDLE IDLE IDLE; SIR 8 TDI (06);")),
                ElementsAre("RUNTEST 3 TCK", "SIR 8 06", "IDLE"))
        << start;
  }
}

TEST(SvfCompile, TakesIdleForEveryPauseIfAsked) {
  const char *kText =
      "ENDDR DRPAUSE;\nENDIR DRPAUSE; SIR 8 TDI (06); SDR 8 TDI (00); SDR 8 TDI (01);"
      "RUNTEST DRPAUSE 9 TCK; STATE IRPAUSE; STATE IREXIT2 IRUPDATE IDLE;"
      "STATE DRSELECT DRCAPTURE DREXIT1 DRPAUSE; SDR 8 TDI (02);";
  EXPECT_THAT(CompileError(kText), StartsWith("2:16: this SIR ends in DRPAUSE"));
  tool::CompileOptions options;
  options.pause_as_idle = true;
  EXPECT_THAT(Records(kText, options),
              ElementsAre("SIR 8 06", "SDR 16 0100", "RUNTEST 9 TCK", "SDR 8 02", "IDLE"));
}

TEST(SvfCompile, JoinsAScanWithThoseThatResumeIt) {
  EXPECT_THAT(Records("ENDIR IRPAUSE; ENDDR DRPAUSE; SIR 4 TDI (6); SIR 4 TDI (0);"
                      "SDR 8 TDI (11) TDO (AA) MASK (0F); FREQUENCY 1E6 HZ; SDR 8 TDI (22);"
                      "SDR 4 TDI (3) TDO (C); RUNTEST 5 TCK;"),
              ElementsAre("SIR 8 06", "SDR 20 32211 C00AA/F000F", "FREQUENCY 1000000",
                          "RUNTEST 5 TCK", "IDLE"));
  // Each piece has its pads; each way out of the pause but a scan of the same register ends it.
  EXPECT_THAT(Records("HDR 1 TDI (0); TDR 2 TDI (3); ENDDR DRPAUSE; SDR 4 TDI (5); SDR 4 TDI (A);"
                      "STATE IDLE; SDR 4 TDI (5); SIR 4 TDI (2); SDR 4; SDR 4;")[1],
              "SDR 14 3A6A");
}

TEST(SvfCompile, JoinsNoMoreThanAScanHolds) {
  const std::string text =
      "SIR 8 TDI (06);\nENDDR DRPAUSE; SDR 4000000 TDI (0);\nSDR 194298 TDI (1);";
  EXPECT_EQ(CompileError(text), "");
  EXPECT_EQ(CompileError(text + " SDR 1 TDI (1); SDR 6 TDI (0);"),
            "2:16: this SDR pauses and is resumed 3 times; that is one scan of 4194305 bits, which "
            "takes 4194310 clocks, and the player holds 4194303 at most; end it in IDLE now and "
            "then (ENDDR IDLE), or take Run-Test/Idle for such a pause with --pause-as-idle");
}

TEST(SvfCompile, ComparesTheBitsOfPads) {
  EXPECT_THAT(Compiled("HDR 4 TDI (0) TDO (5) MASK (7); TDR 4 TDI (F); SDR 8 TDI (12);"
                       "SDR 8 TDI (12) TDO (34);")
                  .Texts(kPreamble + 1),
              ElementsAre("SDR 16 F120 0005/0007", "SDR 16 F120 0345/0FF7", "IDLE"));
}

TEST(SvfCompile, TakesTrstForAReset) {
  EXPECT_THAT(Records("TRST ON; RUNTEST 5 TCK; TRST OFF; SIR 8 TDI (06); TRST ON;"),
              ElementsAre("RUNTEST 5 TCK", "SIR 8 06", "IDLE"));
  EXPECT_EQ(CompileError("TRST ON;\nSIR 8 TDI (06);"),
            "2:1: TRST is ON, so this SIR would not reach a register; write TRST OFF before it");
  EXPECT_EQ(Compiled("SIR 8 TDI (06);\nTRST ON; TRST Z; SIR 8;").files.size(), 2u);
}

TEST(SvfCompile, TakesALastStatementWithoutItsSemicolon) {
  EXPECT_THAT(Records("SIR 8 TDI (06); RUNTEST 5 TCK\n"),
              ElementsAre("SIR 8 06", "RUNTEST 5 TCK", "IDLE"));
  EXPECT_THAT(Records(std::string_view("SIR 8 TDI (06);\r\n\x1A\0\0\r\n", 22)),
              ElementsAre("SIR 8 06", "IDLE"));
}

TEST(SvfCompile, CountsWhatItWillCost) {
  const Compiled compiled(
      "FREQUENCY 1E6 HZ; SIR 8 TDI (06); SDR 8 TDI (00) TDO (00) MASK (0F);"
      "RUNTEST 100 TCK;");
  EXPECT_EQ(compiled.compiler.files()[0].cost.clocks(), 14 + 13 + 100u);
  EXPECT_EQ(compiled.compiler.files()[0].cost.run_test_clocks(), 100u);
  // TCK twice a clock; TDI 8, TMS 8 and 7; 4 reads; the run-test puts TDI and TMS low.
  EXPECT_EQ(compiled.compiler.files()[0].cost.pin_calls(), 2 * 127 + 16 + 15 + 4 + 2u);
  EXPECT_EQ(compiled.compiler.files()[0].only_hz, 1000000u);
}

}  // namespace
