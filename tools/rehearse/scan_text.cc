// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/scan_text.h"

#include <string>
#include <utility>

namespace tool {
namespace {

std::string NumberText(uint64_t number) {
  return number == 0 ? "-" : std::to_string(number);
}

std::string DataText(const BitRow &row) {
  return row.size() == 0 ? "-" : row.Hex();
}

}  // namespace

ScanText::ScanText(TextSink sink, const TapObserver &tap, std::function<uint64_t()> number_of)
    : sink_(std::move(sink)), tap_(tap), number_of_(std::move(number_of)) {}

void ScanText::Entered(TapState state) {
  if (state == TapState::kCaptureIr || state == TapState::kCaptureDr) {
    tdi_.Clear();
    tdo_.Clear();
    open_ = true;
  } else if (open_ && (state == TapState::kUpdateIr || state == TapState::kUpdateDr)) {
    Write("\n");
  }
}

void ScanText::Shifted(bool tdi, bool tdo) {
  tdi_.Push(tdi);
  tdo_.Push(tdo);
}

void ScanText::Finish() {
  if (open_) {
    Write(" stopped\n");
  }
}

void ScanText::Write(std::string_view end) {
  std::string line = NumberText(number_of_()) + ' ';
  line += NameOf(tap_.scan_register());
  line += ' ' + std::to_string(tdi_.size());
  line += " TDI " + DataText(tdi_) + " TDO " + DataText(tdo_);
  line += end;
  sink_(line);
  open_ = false;
}

}  // namespace tool
