// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A scan, in the file and on the lines, and the TAP that tells where it begins and ends.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "svf/tap.h"
#include "tools/cli/bit_row.h"
#include "tvb/bytes.h"
#include "tvb/play_order.h"

namespace tool {

enum class ScanKind : uint8_t { kIr, kDr };

// "IR" or "DR".
std::string_view NameOf(ScanKind which);

// A TAP controller that starts in Test-Logic-Reset and follows TMS at the rising edges of TCK.
class Tap {
 public:
  // Applies a rising edge of TCK. Returns the new state.
  svf::TapState Rise(bool tms) {
    Stay();
    state_ = svf::After(state_, tms);
    shifting_ = svf::IsShift(state_);
    lasts_ = svf::After(state_, false) == state_;
    if (svf::IsCapture(state_)) {
      bits_ = 0;
    }
    return state_;
  }

  // The same in a state that lasts, with TMS low.
  void Stay() {
    bits_ += shifting_ ? 1 : 0;
  }

  svf::TapState state() const {
    return state_;
  }

  // TMS low leads to the same state.
  bool lasts() const {
    return lasts_;
  }

  // In Shift-IR or Shift-DR: this rising edge will shift a bit.
  bool shifting() const {
    return shifting_;
  }

  // The number of bits shifted since the last Capture, which is the number, from 0, of the bit on
  // TDO while shifting.
  uint64_t bits() const {
    return bits_;
  }

 private:
  svf::TapState state_ = svf::TapState::kReset;
  bool shifting_ = false;
  bool lasts_ = false;
  uint64_t bits_ = 0;
};

// A scan of the file, from its record. See tvb::Bytes for the bit order.
struct FileScan {
  uint64_t number = 0;  // in playing order, from 1
  tvb::PlayedRecord played;
  uint32_t header = 0;  // bits shifted before and after the record's own bits
  uint32_t trailer = 0;
  tvb::Buffer tdo;  // both empty unless the record has them
  tvb::Buffer mask;

  // The number of the record's own bits.
  uint32_t bits() const {
    return played.record.bits();
  }

  // Converts the number of a bit on the lines, header included, to its number in the record; none
  // for a bit of header or trailer.
  std::optional<uint32_t> OwnBit(uint64_t bit) const {
    return bit < header || bit - header >= bits()
               ? std::nullopt
               : std::optional<uint32_t>(static_cast<uint32_t>(bit - header));
  }

  // Whether the driver compares a bit of the record, and the expected value.
  bool Compares(uint32_t bit) const {
    return !mask.empty() && tvb::BitOf(mask, bit);
  }
  bool Expected(uint32_t bit) const {
    return !tdo.empty() && tvb::BitOf(tdo, bit);
  }

  // Whether the driver compares any bit.
  bool ComparesAny() const;
};

// A scan on the lines, header and trailer included. It has no bits before its Capture.
struct LineScan {
  const FileScan *of_file = nullptr;  // null: not one of the file's
  ScanKind which = ScanKind::kIr;
  bool open = false;  // from its Capture to its Update
  BitRow tdi;
  BitRow tdo;
};

// A scan as a line of text, without line end:
//   NUMBER IR|DR BITS TDI HEX TDO HEX
// with the data in SVF notation: the bit shifted first is the lowest bit of the last digit. A scan
// without bits has "-" for its data; the number 0 is shown as "-".
std::string ScanText(uint64_t number, const LineScan &scan);

}  // namespace tool
