// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Where in a text something stands.
#pragma once

#include <cstddef>
#include <string_view>

namespace svf {

// A line and a column in it, both from 1; a column is a byte.
struct Position {
  size_t line = 1;
  size_t column = 1;
};

// Makes positions of offsets. Nothing counts lines while a text is read: they are counted here,
// when somebody asks, from the last place that was asked for. So asking in rising order costs one
// walk through the text in all. A line ends at LF, at CR LF or at CR.
class LineIndex {
 public:
  // `text` must live as long as the object.
  explicit LineIndex(std::string_view text) : text_(text) {}

  // The position of an offset into the text; its end is one, too.
  Position At(size_t offset);

 private:
  std::string_view text_;
  size_t line_ = 1;
  size_t line_start_ = 0;
};

}  // namespace svf
