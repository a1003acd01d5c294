// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/parser.h"

#include <charconv>

#include "svf/text.h"

namespace svf {
namespace {

std::string Quote(std::string_view text) {
  return "'" + std::string(text) + "'";
}

constexpr const char *kStableStates = "RESET, IDLE, IRPAUSE or DRPAUSE";

}  // namespace

std::string_view Name(Register which) {
  constexpr std::string_view kNames[kRegisters] = {"SIR", "SDR", "HIR", "TIR", "HDR", "TDR"};
  return kNames[static_cast<size_t>(which)];
}

std::string_view Name(Field field) {
  constexpr std::string_view kNames[kFields] = {"TDI", "TDO", "MASK", "SMASK"};
  return kNames[static_cast<size_t>(field)];
}

const Parser::Keyword Parser::kKeywords[] = {
    {"SDR", &Parser::ReadSdr},
    {"SIR", &Parser::ReadSir},
    {"RUNTEST", &Parser::ReadRunTest},
    {"STATE", &Parser::ReadState},
    {"ENDIR", &Parser::ReadEndIr},
    {"ENDDR", &Parser::ReadEndDr},
    {"HIR", &Parser::ReadHir},
    {"TIR", &Parser::ReadTir},
    {"HDR", &Parser::ReadHdr},
    {"TDR", &Parser::ReadTdr},
    {"FREQUENCY", &Parser::ReadFrequency},
    {"TRST", &Parser::ReadTrst},
    {"PIO", &Parser::ReadParallel},
    {"PIOMAP", &Parser::ReadParallel},
};

bool Parser::Next(Statement &statement) {
  do {
    Advance();
  } while (token().kind == TokenKind::kSemicolon);
  if (token().kind == TokenKind::kEnd) {
    return false;
  }
  statement.offset = token().offset;
  statement.name = token().text;
  for (const Keyword &keyword : kKeywords) {
    if (Is(token(), keyword.word)) {
      (this->*keyword.read)(statement);
      statement.ended = token().kind != TokenKind::kEnd;
      return true;
    }
  }
  FailExpected(
      "a statement (SIR, SDR, HIR, HDR, TIR, TDR, RUNTEST, STATE, ENDIR, ENDDR, FREQUENCY, "
      "TRST)");
}

void Parser::ReadSir(Statement &statement) {
  ReadScan(Register::kSir, statement);
}

void Parser::ReadSdr(Statement &statement) {
  ReadScan(Register::kSdr, statement);
}

void Parser::ReadHir(Statement &statement) {
  ReadScan(Register::kHir, statement);
}

void Parser::ReadTir(Statement &statement) {
  ReadScan(Register::kTir, statement);
}

void Parser::ReadHdr(Statement &statement) {
  ReadScan(Register::kHdr, statement);
}

void Parser::ReadTdr(Statement &statement) {
  ReadScan(Register::kTdr, statement);
}

void Parser::ReadScan(Register which, Statement &statement) {
  // To clear the room of every field takes longer than to empty it.
  auto *held = std::get_if<ScanStatement>(&statement.what);
  auto &scan = held != nullptr ? *held : statement.what.emplace<ScanStatement>();
  for (auto &field : scan.fields) {
    field.reset();
  }
  scan.which = which;
  Advance();
  scan.bits_offset = token().offset;
  scan.bits = TakeLength(which);
  while (token().kind == TokenKind::kWord) {
    ReadField(scan, Name(which));
  }
  ExpectSemicolon("TDI, TDO, MASK, SMASK or ");
}

void Parser::ReadField(ScanStatement &scan, std::string_view name) {
  size_t field = 0;
  while (field < kFields && !Is(token(), Name(static_cast<Field>(field)))) {
    ++field;
  }
  if (field == kFields) {
    FailExpected("TDI, TDO, MASK, SMASK or ';' in this " + std::string(name));
  }
  const std::string_view field_name = Name(static_cast<Field>(field));
  if (scan.fields[field]) {
    throw Error(token().offset, std::string(field_name) + " is given twice in this " +
                                    std::string(name) + "; take one of them out");
  }
  const size_t offset = token().offset;
  Advance();
  if (token().kind != TokenKind::kData) {
    FailExpected("hexadecimal data in parentheses after " + std::string(field_name));
  }
  scan.fields[field] = {offset, token().hex};
  Advance();
}

void Parser::ReadEndIr(Statement &statement) {
  ReadEnd(true, statement);
}

void Parser::ReadEndDr(Statement &statement) {
  ReadEnd(false, statement);
}

void Parser::ReadEnd(bool instruction, Statement &statement) {
  auto &end = statement.what.emplace<EndStatement>();
  end.instruction = instruction;
  Advance();
  end.state_offset = token().offset;
  end.state = TakeStableState(instruction ? "after ENDIR" : "after ENDDR");
  ExpectSemicolon("");
}

void Parser::ReadState(Statement &statement) {
  auto &state = statement.what.emplace<StateStatement>();
  Advance();
  while (token().kind == TokenKind::kWord) {
    const auto found = FindTapState(token().text);
    if (!found) {
      FailExpected("the name of a TAP state, as IDLE or DRPAUSE, or ';'");
    }
    state.path.push_back({*found, token().offset});
    Advance();
  }
  if (state.path.empty()) {
    FailExpected("the name of a TAP state after STATE");
  }
  ExpectSemicolon("the name of a TAP state or ");
  if (!IsStable(state.path.back().state)) {
    throw Error(state.path.back().offset,
                "a path ends in a stable state (" + std::string(kStableStates) + "), not in " +
                    std::string(Name(state.path.back().state)) + "; lead it on to one");
  }
}

void Parser::ReadRunTest(Statement &statement) {
  auto &run = statement.what.emplace<RunTestStatement>();
  Advance();
  if (token().kind == TokenKind::kWord) {
    const size_t offset = token().offset;
    run.run = {TakeStableState("or a number after RUNTEST"), offset};
  }
  ReadRunTestAmounts(run);
  ReadRunTestEnd(run);
}

// n TCK|SCK [t SEC] or t SEC.
void Parser::ReadRunTestAmounts(RunTestStatement &run) {
  const Token number = token();
  const Decimal amount = TakeReal("a number of clocks or seconds in this RUNTEST");
  const bool system_clock = Is(token(), "SCK");
  if (Accept("SEC")) {
    run.minimum = {amount, number.offset};
    return;
  }
  if (!Accept("TCK") && !Accept("SCK")) {
    FailExpected("TCK, SCK or SEC after the number");
  }
  const auto whole = amount.Whole();
  if (!whole || *whole > UINT32_MAX) {
    throw Error(number.offset, "expected a whole number of clocks up to 4294967295, found " +
                                   Quoted(number) + "; write several RUNTESTs for more");
  }
  run.count = {static_cast<uint32_t>(*whole), system_clock, number.offset};
  if (token().kind == TokenKind::kNumber) {
    run.minimum = TakeTime();
  }
}

// [MAXIMUM t SEC] [ENDSTATE s] ;
void Parser::ReadRunTestEnd(RunTestStatement &run) {
  std::string_view or_what = run.minimum ? "MAXIMUM, ENDSTATE or " : "a minimum time, ENDSTATE or ";
  if (run.minimum && Accept("MAXIMUM")) {
    run.maximum = TakeTime();
    or_what = "ENDSTATE or ";
  }
  if (Accept("ENDSTATE")) {
    const size_t offset = token().offset;
    run.end = {TakeStableState("after ENDSTATE"), offset};
    or_what = "";
  }
  ExpectSemicolon(or_what);
}

void Parser::ReadFrequency(Statement &statement) {
  auto &frequency = statement.what.emplace<FrequencyStatement>();
  Advance();
  if (token().kind != TokenKind::kSemicolon && token().kind != TokenKind::kEnd) {
    frequency.hertz_offset = token().offset;
    frequency.hertz = TakeReal("a number of HZ or ';' after FREQUENCY");
    if (!Accept("HZ")) {
      FailExpected("HZ after the number");
    }
  }
  ExpectSemicolon("");
}

void Parser::ReadTrst(Statement &statement) {
  using Mode = TrstStatement::Mode;
  constexpr struct {
    std::string_view word;
    Mode mode;
  } kModes[] = {{"ON", Mode::kOn}, {"OFF", Mode::kOff}, {"Z", Mode::kZ}, {"ABSENT", Mode::kAbsent}};
  auto &trst = statement.what.emplace<TrstStatement>();
  Advance();
  for (const auto &known : kModes) {
    if (Accept(known.word)) {
      trst.mode = known.mode;
      ExpectSemicolon("");
      return;
    }
  }
  FailExpected("ON, OFF, Z or ABSENT after TRST");
}

// The parentheses of PIO and PIOMAP do not hold hexadecimal data.
void Parser::ReadParallel(Statement &statement) {
  statement.what.emplace<ParallelStatement>();
  lexer_.SkipToSemicolon();
  Advance();
}

bool Parser::Accept(std::string_view word) {
  if (!Is(token(), word)) {
    return false;
  }
  Advance();
  return true;
}

uint32_t Parser::TakeLength(Register which) {
  uint32_t bits = 0;
  const char *end = token().text.data() + token().text.size();
  const auto result = std::from_chars(token().text.data(), end, bits);
  if (token().kind != TokenKind::kNumber || result.ec != std::errc() || result.ptr != end) {
    FailLength(which, result.ec == std::errc::result_out_of_range && result.ptr == end);
  }
  Advance();
  return bits;
}

void Parser::FailLength(Register which, bool too_large) const {
  const std::string what = "the length in bits after " + std::string(Name(which));
  if (token().kind != TokenKind::kNumber) {
    FailExpected(what);
  }
  RefuseOddNumber(what);
  if (too_large) {
    throw Error(token().offset,
                Quoted(token()) + " is too large; expected " + what + ", at most 4294967295");
  }
  throw Error(token().offset, "expected " + what + ", a whole number, found " + Quoted(token()));
}

Decimal Parser::TakeReal(std::string_view what) {
  if (token().kind != TokenKind::kNumber) {
    FailExpected(what);
  }
  const auto value = Decimal::Parse(token().text);
  if (!value) {
    RefuseOddNumber(what);
    throw Error(token().offset, "expected " + std::string(what) +
                                    ", as 1000, 0.5 or 1.0E-3, found " + Quoted(token()));
  }
  Advance();
  return *value;
}

RunTestStatement::Time Parser::TakeTime() {
  RunTestStatement::Time time;
  time.offset = token().offset;
  time.seconds = TakeReal("a number of seconds");
  if (!Accept("SEC")) {
    FailExpected("SEC after the number of seconds");
  }
  return time;
}

TapState Parser::TakeStableState(std::string_view what) {
  const auto state = token().kind == TokenKind::kWord ? FindTapState(token().text) : std::nullopt;
  if (!state || !IsStable(*state)) {
    FailExpected(std::string(kStableStates) + " " + std::string(what));
  }
  Advance();
  return *state;
}

// Checks what ends the statement without reading past it, so that the lexer's offset is the end
// of the statement.
void Parser::ExpectSemicolon(std::string_view or_what) {
  if (token().kind != TokenKind::kSemicolon && token().kind != TokenKind::kEnd) {
    FailExpected(std::string(or_what) + Quote(";"));
  }
}

void Parser::FailExpected(std::string_view what) const {
  throw Error(token().offset, "expected " + std::string(what) + ", found " + Quoted(token()));
}

void Parser::RefuseOddNumber(std::string_view what) const {
  if (token().text.front() == '-') {
    throw Error(token().offset,
                "expected " + std::string(what) + ", found the negative number " + Quoted(token()));
  }
  if (token().text.find(',') != std::string_view::npos) {
    throw Error(token().offset,
                Quoted(token()) + " has a decimal comma; write a decimal point in its place");
  }
}

}  // namespace svf
