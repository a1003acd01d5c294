// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Rehearses any file with an echo. A file without check errors plays to its end; if an inverted bit
// makes the comparison fail, it fails at that bit.
#include "fuzz/fuzz.h"
#include "fuzz/rehearse.h"
#include "tools/cli/command.h"
#include "tvb/reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const tvb::Bytes image(data, size);
  if (tvb::ReadHeader(image).fault || fuzz::IsLong(image)) {
    return 0;
  }
  const bool good = fuzz::IsGood(image);
  uint64_t scans = 0;
  fuzz::Rehearse(image, nullptr, {}, [&](tool::Rehearsal &rehearsal, int code) {
    scans = rehearsal.playhead().scans();
    fuzz::Require(!good || code == tool::kDone, "a file without errors plays");
    fuzz::Require(!good || !rehearsal.mismatch(), "an echo answers what is expected");
  });
  if (scans == 0) {
    return 0;
  }

  tool::RehearsalOptions options;
  options.fail_at = tool::FailAt{1 + size % scans, size % 5};
  options.vcd_idle = 3;
  fuzz::Rehearse(image, nullptr, options, [&](tool::Rehearsal &rehearsal, int) {
    const std::optional<tool::Mismatch> &mismatch = rehearsal.mismatch();
    if (good && mismatch) {
      fuzz::Require(mismatch->scan == options.fail_at->scan, "the scan fails that was to fail");
      fuzz::Require(mismatch->bit == options.fail_at->bit, "at the bit that was inverted");
    }
  });
  return 0;
}
