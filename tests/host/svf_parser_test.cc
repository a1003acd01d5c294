// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/parser.h"

#include <gtest/gtest.h>

#include <string>

#include "svf_bench.h"

namespace {

using svf::Field;
using svf::Register;
using svf::TapState;
using test::ParseError;
using test::ParseOne;

template <typename T>
T Parsed(const std::string &text) {
  // Statements point into their text.
  static std::string kept;
  kept = text;
  return std::get<T>(ParseOne(kept).what);
}

TEST(SvfParser, ReadsAScanWithItsFieldsInAnyOrder) {
  const auto scan = Parsed<svf::ScanStatement>("sdr 32 Mask(0f) tdo (12) TDI (3) SMASK(4);");
  EXPECT_EQ(scan.which, Register::kSdr);
  EXPECT_EQ(scan.bits, 32u);
  EXPECT_EQ(scan.bits_offset, 4u);
  EXPECT_EQ(scan.field(Field::kMask)->data.text, "0f");
  EXPECT_EQ(scan.field(Field::kTdo)->data.text, "12");
  EXPECT_EQ(scan.field(Field::kTdi)->data.text, "3");
  EXPECT_EQ(scan.field(Field::kSmask)->data.text, "4");
}

TEST(SvfParser, TellsTheSixRegistersApart) {
  const char *kNames[] = {"SIR", "SDR", "HIR", "TIR", "HDR", "TDR"};
  for (size_t i = 0; i < svf::kRegisters; ++i) {
    const auto which = Parsed<svf::ScanStatement>(std::string(kNames[i]) + " 0;").which;
    EXPECT_EQ(which, static_cast<Register>(i));
    EXPECT_EQ(Name(which), kNames[i]);
    EXPECT_EQ(svf::IsPad(which), i >= 2);
  }
}

TEST(SvfParser, ReadsBothFormsOfRunTest) {
  auto run = Parsed<svf::RunTestStatement>("RUNTEST 100 TCK;");
  EXPECT_EQ(run.count->clocks, 100u);
  EXPECT_FALSE(run.count->system_clock || run.minimum || run.maximum || run.run || run.end);

  run = Parsed<svf::RunTestStatement>(
      "RUNTEST DRPAUSE 1E3 SCK 1E-3 SEC MAXIMUM 2E-3 SEC ENDSTATE IDLE;");
  EXPECT_EQ(run.run->state, TapState::kDrPause);
  EXPECT_EQ(run.count->clocks, 1000u);
  EXPECT_TRUE(run.count->system_clock);
  EXPECT_EQ(run.minimum->seconds.TimesUp(1000000), 1000u);
  EXPECT_EQ(run.maximum->seconds.TimesUp(1000000), 2000u);
  EXPECT_EQ(run.end->state, TapState::kIdle);

  run = Parsed<svf::RunTestStatement>("runtest idle .5 sec endstate irpause;");
  EXPECT_FALSE(run.count);
  EXPECT_EQ(run.run->state, TapState::kIdle);
  EXPECT_EQ(run.minimum->seconds.TimesUp(10), 5u);
  EXPECT_EQ(run.end->state, TapState::kIrPause);
}

TEST(SvfParser, ReadsTheOtherStatements) {
  EXPECT_TRUE(Parsed<svf::EndStatement>("ENDIR IRPAUSE;").instruction);
  EXPECT_EQ(Parsed<svf::EndStatement>("ENDDR RESET;").state, TapState::kReset);
  EXPECT_EQ(Parsed<svf::StateStatement>("STATE RESET DRSELECT IDLE;").path.size(), 3u);
  EXPECT_EQ(Parsed<svf::FrequencyStatement>("FREQUENCY 1.5E6 HZ;").hertz->TimesUp(1), 1500000u);
  EXPECT_FALSE(Parsed<svf::FrequencyStatement>("FREQUENCY;").hertz);
  using Mode = svf::TrstStatement::Mode;
  EXPECT_EQ(Parsed<svf::TrstStatement>("TRST ON;").mode, Mode::kOn);
  EXPECT_EQ(Parsed<svf::TrstStatement>("TRST off;").mode, Mode::kOff);
  EXPECT_EQ(Parsed<svf::TrstStatement>("TRST Z;").mode, Mode::kZ);
  EXPECT_EQ(Parsed<svf::TrstStatement>("TRST ABSENT;").mode, Mode::kAbsent);
  Parsed<svf::ParallelStatement>("PIO (HLX);");
  Parsed<svf::ParallelStatement>("PIOMAP (IN A);");
}

TEST(SvfParser, SkipsEmptyStatementsAndEnds) {
  svf::Parser parser(";; TRST Z;; ! end");
  svf::Statement statement;
  EXPECT_TRUE(parser.Next(statement));
  EXPECT_EQ(statement.offset, 3u);
  EXPECT_FALSE(parser.Next(statement));
  EXPECT_FALSE(parser.Next(statement));
}

TEST(SvfParser, TakesTheLargestInteger) {
  EXPECT_EQ(Parsed<svf::ScanStatement>("SDR 4294967295 TDI (0);").bits, 4294967295u);
  EXPECT_EQ(Parsed<svf::RunTestStatement>("RUNTEST 4294967295 TCK;").count->clocks, 4294967295u);
}

TEST(SvfParser, SaysWhereAStatementGoesWrong) {
  EXPECT_EQ(ParseError("SIR 8 TDI (06)\n  TDX (00);"),
            "2:3: expected TDI, TDO, MASK, SMASK or ';' in this SIR, found 'TDX'");
  EXPECT_EQ(ParseError("RUNTEST 1 TCK 2 TCK;"),
            "1:17: expected SEC after the number of seconds, found 'TCK'");
  EXPECT_EQ(ParseError("RUNTEST 1 SEC ENDSTATE IDLE MAXIMUM 2 SEC;"),
            "1:29: expected ';', found 'MAXIMUM'");
  EXPECT_EQ(ParseError("TRST OFF OFF;"), "1:10: expected ';', found 'OFF'");
  EXPECT_EQ(ParseError("STATE IDLE 5;"),
            "1:12: expected the name of a TAP state or ';', found '5'");
  EXPECT_EQ(ParseError("SIR 1 TDI (0) " + std::string(60, 'X') + ";"),
            "1:15: expected TDI, TDO, MASK, SMASK or ';' in this SIR, found '" +
                std::string(40, 'X') + "...'");
}

// Every beginning of a good text is either good or wrong in a way that is told.
TEST(SvfParser, SurvivesEveryPrefix) {
  const std::string text =
      "! c\nHIR 4 TDI (F) SMASK (F);SDR 8 TDI(0!x\nF) TDO (00) MASK (FF);\r\n"
      "RUNTEST IDLE 5 TCK 1.5E-3 SEC MAXIMUM 2 SEC ENDSTATE IDLE;STATE RESET IDLE;"
      "FREQUENCY 1E6 HZ;ENDIR IDLE;TRST Z;";
  size_t good = 0;
  for (size_t size = 0; size <= text.size(); ++size) {
    const std::string error = ParseError(std::string_view(text).substr(0, size));
    good += error.empty();
    EXPECT_EQ(error.find("basic_string"), std::string::npos);
  }
  EXPECT_GE(good, 7u);
  EXPECT_EQ(ParseError(text), "");
}

}  // namespace
