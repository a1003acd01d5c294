// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads SVF text statement by statement.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "svf/lexer.h"
#include "svf/number.h"
#include "svf/tap.h"

namespace svf {

// Each statement is parsed on its own, independent of earlier ones. Every offset is in bytes from
// the start of the text.

// The six registers that statements give data for.
enum class Register : uint8_t { kSir, kSdr, kHir, kTir, kHdr, kTdr };
constexpr size_t kRegisters = 6;

// "SIR".
std::string_view Name(Register which);

// True for the four that are stored and surround every later scan.
inline bool IsPad(Register which) {
  return which != Register::kSir && which != Register::kSdr;
}

enum class Field : uint8_t { kTdi, kTdo, kMask, kSmask };
constexpr size_t kFields = 4;

// "TDI".
std::string_view Name(Field field);

// SIR, SDR, HIR, TIR, HDR, TDR: a length and up to four fields.
struct ScanStatement {
  struct FieldText {
    size_t offset = 0;  // of the field's name
    HexText data;
  };

  Register which = Register::kSir;
  uint32_t bits = 0;
  size_t bits_offset = 0;
  std::array<std::optional<FieldText>, kFields> fields;

  const std::optional<FieldText> &field(Field name) const {
    return fields[static_cast<size_t>(name)];
  }
};

// A state and the offset of its name.
struct NamedState {
  TapState state;
  size_t offset;
};

// ENDIR, ENDDR: where later scans end.
struct EndStatement {
  bool instruction = false;  // ENDIR
  TapState state = TapState::kIdle;
  size_t state_offset = 0;
};

// STATE: a state, or a path to it; the last state is stable.
struct StateStatement {
  std::vector<NamedState> path;  // at least one
};

// RUNTEST. At least one of count and minimum time is present.
struct RunTestStatement {
  struct Time {
    Decimal seconds;
    size_t offset = 0;
  };
  struct Count {
    uint32_t clocks = 0;
    bool system_clock = false;  // SCK
    size_t offset = 0;
  };

  std::optional<NamedState> run;
  std::optional<Count> count;
  std::optional<Time> minimum;
  std::optional<Time> maximum;
  std::optional<NamedState> end;
};

// FREQUENCY; without a number it restores full speed.
struct FrequencyStatement {
  std::optional<Decimal> hertz;
  size_t hertz_offset = 0;
};

// TRST.
struct TrstStatement {
  enum class Mode : uint8_t { kOn, kOff, kZ, kAbsent };
  Mode mode = Mode::kZ;
};

// PIO and PIOMAP; their contents are not parsed.
struct ParallelStatement {};

struct Statement {
  size_t offset = 0;      // of its first word
  std::string_view name;  // that word as in the file
  bool ended = true;      // by ';'; false: by the end of the text
  std::variant<ScanStatement, EndStatement, StateStatement, RunTestStatement, FrequencyStatement,
               TrstStatement, ParallelStatement>
      what;
};

// Knows the grammar only; ScanRegister handles what carries over from statement to statement.
// Memory use does not depend on the length of the text.
class Parser {
 public:
  // `text` must live as long as the object and the statements.
  explicit Parser(std::string_view text) : lexer_(text) {}

  // Reads the next statement into `statement`; returns false, with nothing read, at the end of the
  // text, which also ends a statement that is whole but for its ';'. Throws Error for anything that
  // is not a statement; nothing can be read after that.
  bool Next(Statement &statement);

  // How far the text has been read, in bytes.
  size_t offset() const {
    return lexer_.offset();
  }

 private:
  using Read = void (Parser::*)(Statement &statement);
  struct Keyword {
    std::string_view word;
    Read read;
  };
  static const Keyword kKeywords[];

  void ReadSir(Statement &statement);
  void ReadSdr(Statement &statement);
  void ReadHir(Statement &statement);
  void ReadTir(Statement &statement);
  void ReadHdr(Statement &statement);
  void ReadTdr(Statement &statement);
  void ReadEndIr(Statement &statement);
  void ReadEndDr(Statement &statement);
  void ReadState(Statement &statement);
  void ReadRunTest(Statement &statement);
  void ReadFrequency(Statement &statement);
  void ReadTrst(Statement &statement);
  void ReadParallel(Statement &statement);

  void ReadScan(Register which, Statement &statement);
  void ReadField(ScanStatement &scan, std::string_view name);
  void ReadEnd(bool instruction, Statement &statement);
  void ReadRunTestAmounts(RunTestStatement &run);
  void ReadRunTestEnd(RunTestStatement &run);

  void Advance() {
    lexer_.Next();
  }
  // The next one to parse.
  const Token &token() const {
    return lexer_.token();
  }
  bool Accept(std::string_view word);
  uint32_t TakeLength(Register which);
  Decimal TakeReal(std::string_view what);
  RunTestStatement::Time TakeTime();
  TapState TakeStableState(std::string_view what);
  void ExpectSemicolon(std::string_view or_what);
  [[noreturn]] void FailLength(Register which, bool too_large) const;
  [[noreturn]] void FailExpected(std::string_view what) const;
  void RefuseOddNumber(std::string_view what) const;

  Lexer lexer_;
};

}  // namespace svf
