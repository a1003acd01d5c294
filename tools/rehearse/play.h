// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the command `play` does: one rehearsal of a download.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// A bit that reads inverted: of a scan of the file, from 1, the bit of its record, from 0.
struct FailAt {
  uint64_t scan = 0;
  uint64_t bit = 0;
};

struct PlayOptions {
  std::string input;
  std::string chain;  // a file that describes the target; empty: an echo
  std::optional<FailAt> fail_at;
  std::string vcd;        // files to write; empty: none
  uint64_t vcd_idle = 0;  // clocks of a stay in Run-Test/Idle that are drawn; 0: all
  std::string scans;
  std::string memory;
  bool time = false;
  double pin_ns = 100;  // what a pin call takes
};

// Reads "SCAN:BIT". None if the text is not that.
std::optional<FailAt> ParseFailAt(const std::string &text);

// Plays options.input and returns the exit code. The driver's log and the result are shown on
// standard output, or on standard error where a file of the options is standard output; errors and
// warnings on standard error. Throws Failure if a file is bad.
int Play(const PlayOptions &options);

}  // namespace tool
