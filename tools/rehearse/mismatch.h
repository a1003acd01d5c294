// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A comparison that failed: where, what was expected, what was read, and what that looks like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/cli/bit_row.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/scan.h"
#include "tools/rehearse/target.h"
#include "tvb/bytes.h"

namespace tool {

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

// A scan in which the driver has stopped, as it would have been read if the driver had gone on.
struct StoppedScan {
  uint32_t bit = 0;  // of the record: the driver has read it and went no further
  BitRow read;       // all bits of the record
};

// Takes `target`, on which the driver has stopped in Lines::scan(), on to the end of the record's
// bits. This is after the download and on the target alone: `lines`, their counts, their time and
// whoever watches them do not see it. None if the scan is none of the file's.
std::optional<StoppedScan> FinishScan(const Lines &lines, const Playhead &playhead, Target &target);

// Makes the report of the comparison that has failed in that scan, the last of `lines`.
Mismatch MakeMismatch(const StoppedScan &stopped, const Lines &lines, const Playhead &playhead);

// The message in one line: "comparison failed in ...".
std::string MismatchSentence(const Mismatch &mismatch);

// What follows it: a few lines, each ending in a line end.
std::string MismatchDetail(const Mismatch &mismatch);

// Device identification codes have 32 bits, of which bit 0 is 1 and leaves the device first, bits
// 11 to 1 name the manufacturer, 27 to 12 the part and 31 to 28 its revision (IEEE 1149.1).

// Where in a scan an IDCODE is compared: the first of 32 bits in a row that are all under the mask,
// no other bit being under it, and that expect what can be an IDCODE. None if it is not one.
std::optional<size_t> FindIdcode(const BitRow &expected, const BitRow &mask);

// Whether one of the instructions, 8 bits each, that an SIR record shifts is one by which the
// driver reads the IDCODE itself, 6 or 224. The order of bits is told at tvb::Bytes.
bool SelectsIdcode(const tvb::Buffer &instructions);

// Tells in a sentence whether an IDCODE that differs from the expected one is of another revision
// of the part or of another part.
std::string DescribeIdcodes(uint32_t expected, uint32_t read);

}  // namespace tool
