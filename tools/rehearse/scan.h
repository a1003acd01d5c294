// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A scan: as the file has it, as it is on the lines, and the TAP that tells where it begins and
// ends.
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

enum class Register : uint8_t { kIr, kDr };

// "IR" or "DR".
std::string_view NameOf(Register which);

// A TAP controller that starts in Test-Logic-Reset, as told from TMS at the rising edges of TCK.
class Tap {
 public:
  // A rising edge of TCK. Returns the state that it leads to.
  svf::TapState Rise(bool tms) {
    bits_ += shifting() ? 1 : 0;
    state_ = svf::After(state_, tms);
    if (svf::IsCapture(state_)) {
      bits_ = 0;
    }
    return state_;
  }

  svf::TapState state() const {
    return state_;
  }

  // In Shift-IR or Shift-DR: this rising edge will shift a bit.
  bool shifting() const {
    return svf::IsShift(state_);
  }

  // Bits that were shifted since the last Capture: the number of the bit, from 0, that is on TDO
  // while shifting.
  uint64_t bits() const {
    return bits_;
  }

 private:
  svf::TapState state_ = svf::TapState::kReset;
  uint64_t bits_ = 0;
};

// A scan of the file, as its record has it. The order of bits is told at tvb::Bytes.
struct FileScan {
  uint64_t number = 0;  // the file's scans in the order of playing, from 1
  tvb::PlayedRecord played;
  uint32_t header = 0;  // bits shifted before and after the record's own
  uint32_t trailer = 0;
  tvb::Buffer tdo;  // both empty unless the record has them
  tvb::Buffer mask;

  // Bits of the record's own.
  uint32_t bits() const {
    return played.record.bits();
  }

  // Number of the record's bit of which `bit` is the number on the lines, header included; none for
  // a bit of header or trailer.
  std::optional<uint32_t> OwnBit(uint64_t bit) const;

  // Whether the driver compares a bit of the record, and with what.
  bool Compares(uint32_t bit) const;
  bool Expected(uint32_t bit) const;

  // Whether it compares any.
  bool ComparesAny() const;
};

// A scan on the lines, header and trailer included. It has no bits before its Capture.
struct LineScan {
  const FileScan *of_file = nullptr;  // null: none of the file's
  Register which = Register::kIr;
  bool open = false;  // from its Capture to its Update
  BitRow tdi;
  BitRow tdo;
};

// A scan in a line of text without its end:
//   NUMBER IR|DR BITS TDI HEX TDO HEX
// with the data as in SVF, the bit that is shifted first being the lowest of the last digit. A scan
// of no bits has "-" for its data, and 0 is "-" for a number.
std::string ScanText(uint64_t number, const LineScan &scan);

}  // namespace tool
