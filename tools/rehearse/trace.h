// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The traces of a rehearsal: a waveform and a list of scans.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/rehearse/lines.h"

namespace tool {

// Receives text as it is produced.
using TextSink = std::function<void(std::string_view text)>;

// What a dump shows of the TAP's state.
enum class StateForm {
  kNone,
  // Its number in svf::TapState, as the wires state[3] to state[0]: some programs stop at the first
  // change of a variable of several bits.
  kBits,
  kString,  // its name in the standard; an extension of VCD that some viewers skip or complain of
};

// The form called "none", "bits" or "string"; none if there is no such form.
std::optional<StateForm> FindStateForm(std::string_view name);

// The four lines and the TAP's state as a value change dump (VCD, IEEE 1364), for a waveform
// viewer. The scope `jtag` contains the wires TCK, TMS, TDI and TDO, in this order, and `state`,
// as asked for. The time unit is the longest VCD unit that divides both the duration of
// a pin call and the driver's wait of 100 microseconds.
//
// A stay in Run-Test/Idle may last millions of clocks; the dump can be limited to the first ones:
// TCK then rests until the TAP leaves the state, which is drawn at its true time.
class Vcd {
 public:
  // Writes the head with the current levels of `lines`. `call_time`: the value that `lines` was
  // constructed with. `max_idle_clocks`: the clocks drawn per stay in Run-Test/Idle; 0: all.
  Vcd(TextSink sink, const Lines &lines, double call_time, uint64_t max_idle_clocks = 0,
      StateForm state_form = StateForm::kBits);

  void Add(const LineChange &change);

  // Ends the dump at `time`. No change may follow.
  void Finish(uint64_t time);

 private:
  void WriteHead(const Lines &lines);
  bool Rests(const LineChange &change);
  void Draw(Line line, bool level, uint64_t time);
  void StampTime(uint64_t time);
  void PutLevel(Line line, bool level);
  void PutState(svf::TapState state);
  void PutStateBits(unsigned bits);
  void FlushIfLong();

  TextSink sink_;
  uint64_t unit_;         // nanoseconds
  uint64_t stamped_ = 0;  // the last time written, in units
  uint64_t max_idle_clocks_;
  StateForm state_form_;
  std::optional<unsigned> state_bits_;  // as they were drawn last
  uint64_t idle_clocks_ = 0;            // of the current stay in Run-Test/Idle
  std::optional<uint64_t> fell_at_;     // a falling edge of TCK that is not drawn yet
  bool idle_;
  bool tms_;
  std::string text_;  // not yet passed to the sink
};

// The time unit of a dump, in nanoseconds: 1, 10 or 100 times a power of 1000. It is 1 if a pin
// call does not take whole nanoseconds.
uint64_t VcdUnit(double call_time);

// The scans, one line each, in the format of ScanText(). The number is that of the file's scan; a
// scan that the driver makes by itself has none. A scan that the driver leaves in the middle ends
// in "stopped".
class ScanList {
 public:
  explicit ScanList(TextSink sink) : sink_(std::move(sink)) {}

  // Writes a scan that has been updated.
  void Add(const LineScan &scan);

  // Writes `scan`, the last on the lines, if the TAP has not left it.
  void Finish(const LineScan &scan);

 private:
  void Write(const LineScan &scan, std::string_view end);

  TextSink sink_;
};

}  // namespace tool
