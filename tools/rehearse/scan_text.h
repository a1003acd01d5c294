// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The scans of a rehearsal as text, one a line, as they are on the wire: header and trailer bits
// are part of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "tools/cli/bit_row.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/vcd.h"

namespace tool {

// A line is
//   NUMBER IR|DR BITS TDI HEX TDO HEX
// with the data as in SVF, the bit that is shifted first being the lowest of the last digit. A scan
// of no bits has "-" for its data. The number is the one that the file's scans go by, or "-" for a
// scan that the driver makes of itself. A scan that the driver leaves in its middle ends in
// "stopped".
class ScanText : public ScanWatcher {
 public:
  // `number_of` tells the file's number of the scan under way, 0: none of the file's.
  ScanText(TextSink sink, const TapObserver &tap, std::function<uint64_t()> number_of);

  void Entered(TapState state) override;
  void Shifted(bool tdi, bool tdo) override;
  void Read(bool) override {}

  // Writes a scan that was not left, if there is one.
  void Finish();

 private:
  void Write(std::string_view end);

  TextSink sink_;
  const TapObserver &tap_;
  std::function<uint64_t()> number_of_;
  BitRow tdi_;
  BitRow tdo_;
  bool open_ = false;
};

}  // namespace tool
