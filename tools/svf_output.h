// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes SVF statements.
#pragma once

#include <cstdint>
#include <string>

#include "tools/cli/output_file.h"
#include "tvb/bytes.h"

namespace tool {

// Register data in arguments has the order of tvb::Bytes: the first bit out is the most significant
// bit of the first byte. In the SVF it is the lowest bit of the last digit.
class SvfOutput {
 public:
  // `out` outlives the object.
  explicit SvfOutput(OutputFile &out) : out_(out) {}

  // A comment of one line; `text` has no line end.
  void Comment(const std::string &text);

  // A statement as it stands, without its ';'.
  void Statement(const std::string &text);

  // Begins a statement about a register: "SDR 24". Then come its fields, then End().
  void Begin(const char *command, uint32_t bits);
  void Field(const char *name, tvb::Bytes data);
  void End();

 private:
  OutputFile &out_;
  uint32_t bits_ = 0;
};

// Seconds as SVF takes them, exact to the microsecond: "0.0015", "40".
std::string SvfSeconds(uint64_t microseconds);

}  // namespace tool
