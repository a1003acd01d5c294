// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a report shows: a run of command files, whoever played them. It holds no more than the page
// needs, so that a page stays small whatever was played.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tool {

enum class ReportVerdict : uint8_t { kHeld, kNothingCompared, kFailed, kNotPlayed };

// A kind of row: a record, or what the driver does by itself before the records.
enum class ReportKind : uint8_t {
  kReset,
  kOwnIr,
  kOwnDr,
  kSir,
  kSdr,
  kRunTest,
  kHir,
  kHdr,
  kTir,
  kTdr,
  kFrequency,
  kLoop,
  kEndLoop,
  kOther,
};

// Hexadecimal digits of a register, each text stored once; number 0 is the empty text.
class ReportTexts {
 public:
  // The number of a text, which is new or was there before.
  uint32_t Add(const std::string &text);

  const std::vector<std::string> &all() const {
    return texts_;
  }

 private:
  std::vector<std::string> texts_ = {""};
  std::unordered_map<std::string, uint32_t> numbers_ = {{"", 0}};
};

// The statement of a source file that a record comes from.
struct ReportSource {
  std::string file;
  uint64_t line = 0;
  uint64_t column = 0;
  std::string text;
};

// A row. Times are nanoseconds on the board since the run began; those of a record in a loop are
// the first pass's. A loop's own last from its first pass to the end of its last.
struct ReportRecord {
  ReportKind kind = ReportKind::kOther;
  uint64_t record = 0;  // its number in the file, from 1; 0: the driver's own
  uint64_t offset = 0;  // and size in the file, in bytes
  uint64_t size = 0;
  uint64_t value = 0;     // bits of a register, Hz, or passes of a loop
  uint64_t compared = 0;  // bits that are compared
  uint64_t scan = 0;      // number of the scan of the file, from 1; 0: none
  uint64_t loop = 0;      // number of the LOOP record that repeats it; 0: none
  uint64_t line = 0;      // in the source file; 0: unknown
  uint64_t clocks = 0;
  std::optional<uint64_t> begin;  // none: not played
  uint64_t time = 0;
  uint64_t wait = 0;    // the part of `time` that was waited, with TCK at rest
  uint64_t passes = 0;  // of a loop that were begun
  uint32_t tdi = 0;     // numbers of texts; see AbbreviatedHex() for their form
  uint32_t tdo = 0;
  uint32_t mask = 0;
};

// A change of one of the four lines.
struct ReportChange {
  uint64_t time = 0;
  uint8_t line = 0;  // 0 to 3: TCK, TMS, TDI, TDO
  bool level = false;
  std::string state;  // the TAP's new state; empty if it stays
};

// The last changes of the lines, and what they were before these.
struct ReportWave {
  uint64_t begin = 0;
  bool levels[4] = {};
  std::string state;
  std::vector<ReportChange> changes;
  uint64_t end = 0;
};

// Bits of a failed scan, from `first`; digits as in BitRow::Hex().
struct ReportBits {
  uint64_t first = 0;
  uint64_t count = 0;
  std::string expected;
  std::string read;
  std::string mask;
};

// A comparison that failed.
struct ReportFailure {
  std::string place;     // in the file, as messages have it
  std::string sentence;  // what failed
  std::string detail;    // the lines after it
  uint64_t record = 0;
  uint64_t scan = 0;
  uint64_t bit = 0;  // of the record, from 0: the first that differs
  uint64_t bits = 0;
  uint64_t header = 0;  // bits shifted before the record's own
  uint64_t loop = 0;
  uint64_t pass = 1;
  uint64_t begin = 0;  // of the scan, and when it stopped
  uint64_t end = 0;
  uint64_t compared = 0;
  uint64_t differ = 0;
  std::vector<ReportBits> rows;  // all bits, or the first stretches that differ
  std::optional<ReportSource> source;
  ReportWave wave;
};

struct ReportMessage {
  std::string kind;  // "error", "warning", "note"
  std::string place;
  std::string text;
};

struct ReportLogLine {
  uint64_t time = 0;
  std::string text;
};

// One line of a table of figures; `number` is what `text` says.
struct ReportFigure {
  std::string label;
  uint64_t number = 0;
  std::string text;
  std::string detail;
};

// What the kinds take of a file's time, in nanoseconds, all passes of loops included.
struct ReportSpent {
  uint64_t ir = 0;
  uint64_t dr = 0;
  uint64_t clocked = 0;  // run-tests
  uint64_t waited = 0;   // at their ends
  uint64_t own = 0;      // what the driver does by itself
};

struct ReportFile {
  std::string name;
  uint64_t size = 0;
  std::string seal;  // for people; empty for a file that was never one
  ReportVerdict verdict = ReportVerdict::kNotPlayed;
  std::string words;    // the verdict
  std::string summary;  // what was played, and the verdict
  uint64_t begin = 0;   // on the board
  uint64_t end = 0;
  std::vector<ReportRecord> records;
  uint64_t unlisted = 0;  // records that are not in `records`
  ReportSpent spent;
  std::vector<ReportFigure> figures;
  std::optional<ReportFailure> failure;
};

struct ReportData {
  std::string title;
  std::string target;    // what answered
  std::string clocking;  // what the times rest on
  ReportVerdict verdict = ReportVerdict::kNotPlayed;
  std::string words;
  std::vector<ReportFile> files;
  std::vector<ReportFigure> figures;  // of all files
  std::vector<ReportMessage> messages;
  std::vector<ReportLogLine> log;
  ReportTexts texts;
};

// The most records that a page lists, of all files together.
constexpr uint64_t kMaxReportRecords = 250000;

// The hexadecimal digits of a register in the bytes of a command file (see tvb::Bytes), as in SVF:
// the rightmost bit is shifted first. Of more than kMaxReportDigits only the first and the last
// are kept, half of them each, with "…" between.
constexpr size_t kMaxReportDigits = 40;
std::string AbbreviatedHex(const std::vector<uint8_t> &bytes, uint64_t bits);

}  // namespace tool
