// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A comparison that failed: where, what was expected, what was read, and what that looks like.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/cli/bit_row.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/playhead.h"

namespace tool {

// Keeps what TDO has read, for a report on the scan under way.
class TdoWatch : public ScanWatcher {
 public:
  void Entered(TapState state) override;
  void Shifted(bool, bool tdo) override {
    scan_.Push(tdo);
  }
  void Read(bool tdo) override {
    ++reads_[tdo];
    last_ = tdo;
  }

  // TDO at every bit of the scan under way that has been shifted, header included.
  const BitRow &scan() const {
    return scan_;
  }

  // How often the driver has read that level in the whole download, and what it read last.
  uint64_t reads(bool level) const {
    return reads_[level];
  }
  bool last() const {
    return last_;
  }

 private:
  BitRow scan_;
  uint64_t reads_[2] = {};
  bool last_ = false;
};

// One scan whose comparison failed. The rows have the record's own bits; those under the mask
// count.
struct Mismatch {
  uint64_t scan = 0;    // as in FileScan
  uint64_t record = 0;  // its number and the offset of its '^'
  uint64_t offset = 0;
  uint64_t loop = 0;  // number of the LOOP record; 0: none
  uint64_t pass = 1;
  uint64_t passes = 1;
  Register which = Register::kDr;
  uint32_t header = 0;
  uint32_t trailer = 0;
  uint32_t bit = 0;  // the first that differs: the driver stops there
  BitRow expected;
  BitRow mask;
  BitRow read;
  std::optional<bool> stuck_in_scan;  // the level of every bit that this scan compares
  std::optional<bool> stuck_always;   // the level of every read of the download
  uint64_t reads = 0;                 // of the download
  bool identifies = false;            // the scan is likely one of the IDCODE
};

// Makes the report of the comparison that has just failed, the last read of the driver. Reads the
// rest of the scan from the target, on which the driver has stopped: the lines' watchers are
// dropped. None if the scan on the lines is none of the file's.
std::optional<Mismatch> FindMismatch(Lines &lines, const Playhead &playhead, const TdoWatch &watch);

// The message in one line: "comparison failed in ...".
std::string MismatchSentence(const Mismatch &mismatch);

// What follows it: a few lines, each ending in a line end.
std::string MismatchDetail(const Mismatch &mismatch);

}  // namespace tool
