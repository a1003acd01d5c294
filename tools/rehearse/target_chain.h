// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A simulated chain as the target, and the JSON that describes one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/host.h"
#include "tools/rehearse/target.h"

namespace tool {

// A chain as a file describes it: devices from the TDI end to the TDO end, and faults to begin
// with.
struct ChainDescription {
  std::vector<sim_device_config> devices;
  std::vector<sim_fault> faults;
};

// Reads the JSON of a chain:
//   {"devices": [DEVICE, ...], "faults": [FAULT, ...]}     faults may be left out
// A DEVICE is an object; one without members has BYPASS alone.
//   "idcode"       its IDCODE, a number or a string as "0x0A014C35"
//   "instruction"  the instruction that selects it, 6 (if left out) or 224
//   "part"         a programmable part, {"rows": N, "bits": N} and
//                  "erase", "program": TCK in Run-Test/Idle that they need (if left out 100 and 20)
//                  "blank": true if the memory is erased at first; else it holds zeros
// A FAULT is one of
//   {"kind": "tdo-stuck-0"}  {"kind": "tdo-stuck-1"}
//   {"kind": "flip", "scan": N, "bit": N}         a bit, from 0, of a DR scan, from 1, is inverted
//   {"kind": "dead-row", "device": N, "row": N}   a row, from 0, of a device, from 1, is not
//   written
//   {"kind": "missing", "device": N}              a device, from 1, is not fitted but bridged
// Throws Failure, whose place is "NAME:LINE:COLUMN" or "NAME: /devices/0/idcode", for anything
// else.
ChainDescription ParseChain(std::string_view json, const std::string &name);

class ChainTarget : public Target {
 public:
  // Throws Failure, naming `name`, if there cannot be such a chain or such a fault.
  ChainTarget(const ChainDescription &description, const std::string &name);

  void Write(Line line, bool level) override;
  bool Tdo() const override {
    return chain_.Tdo();
  }

  // The configuration memory as text, a line a row:
  //   DEVICE ROW HEX
  // devices from 1, rows from 0, the bit that is shifted first being the lowest of the last digit.
  std::string Memory();

 private:
  sim::Chain chain_;
};

}  // namespace tool
