// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A failed comparison: its place, the expected and the read data, and the likely cause.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/cli/bit_row.h"
#include "tools/cli/source_map.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/scan.h"
#include "tools/rehearse/target.h"
#include "tvb/bytes.h"

namespace tool {

// One scan whose comparison failed. The rows hold the record's own bits; only those under the mask
// count.
struct Mismatch {
  uint64_t scan = 0;    // as in FileScan
  uint64_t record = 0;  // its number and the offset of its '^'
  uint64_t offset = 0;
  uint64_t loop = 0;  // number of the LOOP record; 0: none
  uint64_t pass = 1;
  uint64_t passes = 1;
  ScanKind which = ScanKind::kDr;
  uint32_t header = 0;
  uint32_t trailer = 0;
  uint32_t bit = 0;  // the first that differs, at which the driver stops
  BitRow expected;
  BitRow mask;
  BitRow read;
  std::optional<bool> stuck_in_scan;  // the common level of all bits that this scan compares
  std::optional<bool> stuck_always;   // the common level of all reads of the download
  uint64_t reads = 0;                 // of the download
  bool identifies = false;            // the scan probably reads the IDCODE
};

// A scan in which the driver stopped, with the data that it would have read by going on.
struct StoppedScan {
  uint32_t bit = 0;  // the last bit of the record that the driver read
  BitRow read;       // all bits of the record
};

// Shifts `target`, which the driver left in the middle of Lines::scan(), to the end of the record's
// bits. Call it after the download. It acts on the target alone: `lines`, their counts, their time
// and their watchers do not see it. None if the scan is not one of the file's.
std::optional<StoppedScan> FinishScan(const Lines &lines, const Playhead &playhead, Target &target);

// Describes the comparison that failed in that scan, the last of `lines`.
Mismatch MakeMismatch(const StoppedScan &stopped, const Lines &lines, const Playhead &playhead);

// The message as one line: "comparison failed in ...".
std::string MismatchSentence(const Mismatch &mismatch);

// The same for a mismatch whose place in the SVF file is known.
std::string MismatchSentence(const Mismatch &mismatch, const SourcePlace &source);

// The lines that follow that: the statement, if its text is not empty, and `record`, the record's
// place.
std::string SourceDetail(const Mismatch &mismatch, const std::string &statement,
                         const std::string &record);

// The lines that follow any message, each with its line end.
std::string MismatchDetail(const Mismatch &mismatch);

// Device identification codes have 32 bits: bit 0 is 1 and leaves the device first, bits 11 to 1
// are the manufacturer, 27 to 12 the part and 31 to 28 its revision (IEEE 1149.1).

// The place of an IDCODE in a scan: the first of 32 consecutive bits that are all under the mask,
// with no other bit under it, and whose expected value can be an IDCODE. None if there is no such
// place.
std::optional<size_t> FindIdcode(const BitRow &expected, const BitRow &mask);

// Whether an SIR record shifts, among its 8-bit instructions, one with which the driver itself
// reads the IDCODE, 6 or 224. See tvb::Bytes for the bit order.
bool SelectsIdcode(const tvb::Buffer &instructions);

// A sentence that says whether an IDCODE that differs from the expected one is another revision of
// the part or another part.
std::string DescribeIdcodes(uint32_t expected, uint32_t read);

}  // namespace tool
