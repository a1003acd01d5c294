// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/text.h"

#include <algorithm>

namespace svf {

Position LineIndex::At(size_t offset) {
  offset = std::min(offset, text_.size());
  if (offset < line_start_) {
    line_ = 1;
    line_start_ = 0;
  }
  for (size_t at = line_start_; at < offset; ++at) {
    const bool return_alone =
        text_[at] == '\r' && (at + 1 == text_.size() || text_[at + 1] != '\n');
    if (text_[at] == '\n' || return_alone) {
      line_start_ = at + 1;
      ++line_;
    }
  }
  return {line_, offset - line_start_ + 1};
}

std::string Quoted(std::string_view text, size_t at) {
  if (at >= text.size()) {
    return "the end of the file";
  }
  const char c = text[at];
  if (c > ' ' && c <= '~') {
    return {'\'', c, '\''};
  }
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<uint8_t>(c);
  return std::string("byte 0x") + kDigits[byte >> 4] + kDigits[byte & 15];
}

}  // namespace svf
