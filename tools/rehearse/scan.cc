// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/scan.h"

#include <fmt/format.h>

#include <algorithm>

namespace tool {
namespace {

std::string DataText(const BitRow &row) {
  return row.size() == 0 ? "-" : row.Hex();
}

}  // namespace

std::string_view NameOf(ScanKind which) {
  return which == ScanKind::kIr ? "IR" : "DR";
}

bool FileScan::ComparesAny() const {
  const uint32_t whole = bits() / 8;
  const auto end = mask.begin() + static_cast<long>(std::min<size_t>(whole, mask.size()));
  if (std::any_of(mask.begin(), end, [](uint8_t byte) { return byte != 0; })) {
    return true;
  }
  for (uint32_t bit = 8 * whole; bit < bits(); ++bit) {
    if (Compares(bit)) {
      return true;
    }
  }
  return false;
}

std::string ScanText(uint64_t number, const LineScan &scan) {
  return fmt::format("{} {} {} TDI {} TDO {}", number == 0 ? "-" : fmt::to_string(number),
                     NameOf(scan.which), scan.tdi.size(), DataText(scan.tdi), DataText(scan.tdo));
}

}  // namespace tool
