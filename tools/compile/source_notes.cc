// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/source_notes.h"

#include <fmt/format.h>

#include "tools/cli/report.h"

namespace tool {

void SourceNotes::Warning(size_t offset, std::string_view message) {
  tool::Warning(Where(offset), message);
}

void SourceNotes::Note(size_t offset, std::string_view message) {
  tool::Note(Where(offset), message);
}

std::string SourceNotes::Where(size_t offset) {
  const svf::Position position = lines_.At(offset);
  return fmt::format("{}:{}:{}", name_, position.line, position.column);
}

}  // namespace tool
