// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/scan.h"

#include <fmt/format.h>

namespace tool {
namespace {

std::string DataText(const BitRow &row) {
  return row.size() == 0 ? "-" : row.Hex();
}

}  // namespace

std::string_view NameOf(ScanKind which) {
  return which == ScanKind::kIr ? "IR" : "DR";
}

std::optional<uint32_t> FileScan::OwnBit(uint64_t bit) const {
  if (bit < header || bit - header >= bits()) {
    return std::nullopt;
  }
  return static_cast<uint32_t>(bit - header);
}

bool FileScan::Compares(uint32_t bit) const {
  return !mask.empty() && tvb::BitOf(mask, bit);
}

bool FileScan::Expected(uint32_t bit) const {
  return !tdo.empty() && tvb::BitOf(tdo, bit);
}

bool FileScan::ComparesAny() const {
  for (uint32_t bit = 0; bit < bits(); ++bit) {
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
