// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Messages about places in a source text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "svf/text.h"

namespace tool {

// Prints warnings and notes at offsets of one text, as "NAME:LINE:COLUMN: warning: ...". Rising
// offsets cost one pass through the text in all.
class SourceNotes {
 public:
  // `name` names the text in messages; `text` must live as long as the object.
  SourceNotes(std::string name, std::string_view text) : name_(std::move(name)), lines_(text) {}

  void Warning(size_t offset, std::string_view message);
  void Note(size_t offset, std::string_view message);

  // "NAME:LINE:COLUMN" of an offset.
  std::string Where(size_t offset);

  const std::string &name() const {
    return name_;
  }

 private:
  std::string name_;
  svf::LineIndex lines_;
};

}  // namespace tool
