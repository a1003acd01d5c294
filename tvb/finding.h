// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Findings: what is wrong with a file, one problem at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tvb/reader.h"

namespace tvb {

enum class Severity {
  kWarning,  // plays as written, but hardly as intended
  kError,    // the player does something else, or misses a failure
  kBroken,   // an error that leaves nothing playable as written
  kDamaged,  // an error: the seal says that the file is not as it was made
};

struct Finding {
  Severity severity = Severity::kWarning;
  uint64_t offset = 0;  // from the start of the image
  uint64_t record = 0;  // number of the record; 0: none
  std::string message;  // what was found, what was expected and what to do
};

// Passes findings on as they are made and counts them.
class Findings {
 public:
  using Report = std::function<void(const Finding &)>;

  explicit Findings(Report report) : report_(std::move(report)) {}

  void Add(Severity severity, uint64_t offset, uint64_t record, const std::string &message) {
    ++(severity == Severity::kWarning ? warnings_ : errors_);
    report_({severity, offset, record, message});
  }
  void Warn(const RecordView &record, const std::string &message) {
    Add(Severity::kWarning, record.offset, record.index, message);
  }
  void Error(const RecordView &record, const std::string &message) {
    Add(Severity::kError, record.offset, record.index, message);
  }
  void Broken(const RecordView &record, uint64_t offset, const std::string &message) {
    Add(Severity::kBroken, offset, record.index, message);
  }

  uint64_t errors() const {
    return errors_;
  }
  uint64_t warnings() const {
    return warnings_;
  }

 private:
  Report report_;
  uint64_t errors_ = 0;
  uint64_t warnings_ = 0;
};

}  // namespace tvb
