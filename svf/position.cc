// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/position.h"

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

}  // namespace svf
