// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/svf_output.h"

#include <fmt/format.h>

#include <string_view>

#include "tools/dump.h"

namespace tool {
namespace {

// Many readers of SVF take lines of at most 256 characters: three short fields on one line, a
// longer one on a line of its own, and the digits of long ones on lines of theirs.
constexpr size_t kDigitsOfShortField = 64;
constexpr size_t kDigitsInLine = 128;

}  // namespace

void SvfOutput::Comment(const std::string &text) {
  out_.Write("! " + text + "\n");
}

void SvfOutput::Statement(const std::string &text) {
  out_.Write(text + ";\n");
}

void SvfOutput::Begin(const char *command, uint32_t bits) {
  bits_ = bits;
  out_.Write(fmt::format("{} {}", command, bits));
}

void SvfOutput::Field(const char *name, tvb::Bytes data) {
  const std::string digits = SvfHex(data, bits_);
  out_.Write(fmt::format("{}{} (", digits.size() <= kDigitsOfShortField ? " " : "\n  ", name));
  for (size_t at = 0; at < digits.size(); at += kDigitsInLine) {
    out_.Write(digits.size() <= kDigitsInLine ? "" : "\n    ");
    out_.Write(std::string_view(digits).substr(at, kDigitsInLine));
  }
  out_.Write(")");
}

void SvfOutput::End() {
  out_.Write(";\n");
}

std::string SvfSeconds(uint64_t microseconds) {
  std::string text = fmt::format("{}.{:06}", microseconds / 1000000, microseconds % 1000000);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text;
}

}  // namespace tool
