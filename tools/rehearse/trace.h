// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a rehearsal writes of the lines: a waveform and a list of scans.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/rehearse/lines.h"

namespace tool {

// Takes text as it is made.
using TextSink = std::function<void(std::string_view text)>;

// The four lines and the TAP's state as a value change dump (VCD, IEEE 1364), for a waveform
// viewer. In the scope `jtag` there are the wires TCK, TMS, TDI and TDO, in this order, and
// `state`, the name of the TAP's state as a string. Strings are an extension that waveform viewers
// know and others skip. The unit of time is the longest that VCD has and that divides the time of a
// pin call and of the driver's wait, 100 microseconds.
//
// Of a stay in Run-Test/Idle, which may be of millions of clocks, the dump can be told to draw the
// first ones only: TCK then rests until the TAP goes on, at the time at which it does.
class Vcd {
 public:
  // Writes the head with the levels that `lines` has now. `call_time`: what `lines` was made with.
  // `max_idle_clocks`: how many clocks of a stay in Run-Test/Idle are drawn; 0: all.
  Vcd(TextSink sink, const Lines &lines, double call_time, uint64_t max_idle_clocks = 0);

  void Add(const LineChange &change);

  // Ends the dump at `time`. Nothing may come after it.
  void Finish(uint64_t time);

 private:
  void WriteHead(const Lines &lines);
  bool Rests(const LineChange &change);
  void Draw(Line line, bool level, uint64_t time);
  void StampTime(uint64_t time);
  void PutLevel(Line line, bool level);
  void PutState(svf::TapState state);
  void FlushIfLong();

  TextSink sink_;
  uint64_t unit_;         // nanoseconds
  uint64_t stamped_ = 0;  // in units: the last time that was written
  uint64_t max_idle_clocks_;
  uint64_t idle_clocks_ = 0;         // of the stay in Run-Test/Idle under way
  std::optional<uint64_t> fell_at_;  // TCK, which is not drawn yet
  bool idle_;
  bool tms_;
  std::string text_;  // not handed to the sink yet
};

// The unit of time of a dump, in nanoseconds: 1, 10 or 100 times a power of 1000. It is 1 where a
// pin call does not take whole nanoseconds.
uint64_t VcdUnit(double call_time);

// The scans, a line each, as ScanText() has them. The number is the one that the file's scans go
// by, none for a scan that the driver makes of itself. A scan that the driver leaves in its middle
// ends in "stopped".
class ScanList {
 public:
  explicit ScanList(TextSink sink) : sink_(std::move(sink)) {}

  // A scan that has been updated.
  void Add(const LineScan &scan);

  // Writes `scan`, the last on the lines, if it was not left.
  void Finish(const LineScan &scan);

 private:
  void Write(const LineScan &scan, std::string_view end);

  TextSink sink_;
};

}  // namespace tool
