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
  } while (token_.kind == TokenKind::kSemicolon);
  if (token_.kind == TokenKind::kEnd) {
    return false;
  }
  statement.offset = token_.offset;
  statement.name = token_.text;
  for (const Keyword &keyword : kKeywords) {
    if (Is(token_, keyword.word)) {
      (this->*keyword.read)(statement);
      statement.ended = token_.kind != TokenKind::kEnd;
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
  auto &scan = statement.what.emplace<ScanStatement>();
  scan.which = which;
  Advance();
  scan.bits_offset = token_.offset;
  scan.bits = TakeInteger("the length in bits after " + std::string(Name(which)));
  while (token_.kind == TokenKind::kWord) {
    ReadField(scan, Name(which));
  }
  ExpectSemicolon("TDI, TDO, MASK, SMASK or ");
}

void Parser::ReadField(ScanStatement &scan, std::string_view name) {
  size_t field = 0;
  while (field < kFields && !Is(token_, Name(static_cast<Field>(field)))) {
    ++field;
  }
  if (field == kFields) {
    FailExpected("TDI, TDO, MASK, SMASK or ';' in this " + std::string(name));
  }
  const std::string field_name(Name(static_cast<Field>(field)));
  if (scan.fields[field]) {
    throw Error(token_.offset, field_name + " is given twice in this " + std::string(name) +
                                   "; take one of them out");
  }
  const size_t offset = token_.offset;
  Advance();
  if (token_.kind != TokenKind::kData) {
    FailExpected("hexadecimal data in parentheses after " + field_name);
  }
  scan.fields[field] = {offset, token_.hex};
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
  end.state_offset = token_.offset;
  end.state = TakeStableState(instruction ? "after ENDIR" : "after ENDDR");
  ExpectSemicolon("");
}

void Parser::ReadState(Statement &statement) {
  auto &state = statement.what.emplace<StateStatement>();
  Advance();
  while (token_.kind == TokenKind::kWord) {
    const auto found = FindTapState(token_.text);
    if (!found) {
      FailExpected("the name of a TAP state, as IDLE or DRPAUSE, or ';'");
    }
    state.path.push_back({*found, token_.offset});
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
  if (token_.kind == TokenKind::kWord) {
    const size_t offset = token_.offset;
    run.run = {TakeStableState("or a number after RUNTEST"), offset};
  }
  ReadRunTestAmounts(run);
  ReadRunTestEnd(run);
}

// n TCK|SCK [t SEC] or t SEC.
void Parser::ReadRunTestAmounts(RunTestStatement &run) {
  const Token number = token_;
  const Decimal amount = TakeReal("a number of clocks or seconds in this RUNTEST");
  const bool system_clock = Is(token_, "SCK");
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
  if (token_.kind == TokenKind::kNumber) {
    run.minimum = TakeTime();
  }
}

// [MAXIMUM t SEC] [ENDSTATE s] ;
void Parser::ReadRunTestEnd(RunTestStatement &run) {
  std::string or_what = run.minimum ? "MAXIMUM, ENDSTATE or " : "a minimum time, ENDSTATE or ";
  if (run.minimum && Accept("MAXIMUM")) {
    run.maximum = TakeTime();
    or_what = "ENDSTATE or ";
  }
  if (Accept("ENDSTATE")) {
    const size_t offset = token_.offset;
    run.end = {TakeStableState("after ENDSTATE"), offset};
    or_what.clear();
  }
  ExpectSemicolon(or_what);
}

void Parser::ReadFrequency(Statement &statement) {
  auto &frequency = statement.what.emplace<FrequencyStatement>();
  Advance();
  if (token_.kind != TokenKind::kSemicolon && token_.kind != TokenKind::kEnd) {
    frequency.hertz_offset = token_.offset;
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
  if (!Is(token_, word)) {
    return false;
  }
  Advance();
  return true;
}

uint32_t Parser::TakeInteger(const std::string &what) {
  if (token_.kind != TokenKind::kNumber) {
    FailExpected(what);
  }
  RefuseOddNumber(what);
  uint32_t value = 0;
  const char *end = token_.text.data() + token_.text.size();
  const auto result = std::from_chars(token_.text.data(), end, value);
  if (result.ec == std::errc::result_out_of_range && result.ptr == end) {
    throw Error(token_.offset,
                Quoted(token_) + " is too large; expected " + what + ", at most 4294967295");
  }
  if (result.ec != std::errc() || result.ptr != end) {
    throw Error(token_.offset, "expected " + what + ", a whole number, found " + Quoted(token_));
  }
  Advance();
  return value;
}

Decimal Parser::TakeReal(const std::string &what) {
  if (token_.kind != TokenKind::kNumber) {
    FailExpected(what);
  }
  RefuseOddNumber(what);
  const auto value = Decimal::Parse(token_.text);
  if (!value) {
    throw Error(token_.offset,
                "expected " + what + ", as 1000, 0.5 or 1.0E-3, found " + Quoted(token_));
  }
  Advance();
  return *value;
}

RunTestStatement::Time Parser::TakeTime() {
  RunTestStatement::Time time;
  time.offset = token_.offset;
  time.seconds = TakeReal("a number of seconds");
  if (!Accept("SEC")) {
    FailExpected("SEC after the number of seconds");
  }
  return time;
}

TapState Parser::TakeStableState(const std::string &what) {
  const auto state = token_.kind == TokenKind::kWord ? FindTapState(token_.text) : std::nullopt;
  if (!state || !IsStable(*state)) {
    FailExpected(std::string(kStableStates) + " " + what);
  }
  Advance();
  return *state;
}

// Checks what ends the statement without reading past it, so that the lexer's offset is the end
// of the statement.
void Parser::ExpectSemicolon(const std::string &or_what) {
  if (token_.kind != TokenKind::kSemicolon && token_.kind != TokenKind::kEnd) {
    FailExpected(or_what + Quote(";"));
  }
}

void Parser::FailExpected(const std::string &what) const {
  throw Error(token_.offset, "expected " + what + ", found " + Quoted(token_));
}

void Parser::RefuseOddNumber(const std::string &what) const {
  if (token_.text.front() == '-') {
    throw Error(token_.offset,
                "expected " + what + ", found the negative number " + Quoted(token_));
  }
  if (token_.text.find(',') != std::string_view::npos) {
    throw Error(token_.offset,
                Quoted(token_) + " has a decimal comma; write a decimal point in its place");
  }
}

}  // namespace svf
