// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads SVF text statement by statement.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "svf/lexer.h"
#include "svf/statement.h"

namespace svf {

// Knows the grammar and nothing of what carries over from statement to statement (ScanRegister does
// that). Memory does not depend on the length of the text.
class Parser {
 public:
  // `text` must live as long as the object and the statements.
  explicit Parser(std::string_view text) : lexer_(text) {}

  // Reads the next statement into `statement`; false, and nothing read, at the end of the text.
  // Throws Error for what is no statement; nothing can be read after that.
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
    token_ = lexer_.Next();
  }
  bool Take(std::string_view word);
  uint32_t TakeInteger(const std::string &what);
  Decimal TakeReal(const std::string &what);
  RunTestStatement::Time TakeTime();
  TapState TakeStableState(const std::string &what);
  void ExpectSemicolon(const std::string &or_what);
  [[noreturn]] void FailExpected(const std::string &what) const;
  void RefuseOddNumber(const std::string &what) const;

  Lexer lexer_;
  Token token_;  // the one to look at next
};

}  // namespace svf
