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

// A chain as described by a file: devices from the TDI end to the TDO end, and the initial faults.
struct ChainDescription {
  std::vector<sim_device_config> devices;
  std::vector<sim_fault> faults;
};

// Parses the JSON of a chain:
//   {"devices": [DEVICE, ...], "faults": [FAULT, ...]}     faults may be left out
// The tables in sim/config.h define the names, the rules and which fields are optional. A DEVICE is
// an object with the fields of a device and, for one with a programmable part, a member "part" with
// the fields of the part; {} is a device with BYPASS alone. A FAULT is an object with its "kind"
// and its numbers. Numbers may be strings such as "0x0A014C35". For example:
//   {"devices": [{"idcode": "0x0A014C35", "part": {"rows": 16, "bits": 128, "blank": true}}, {}],
//    "faults": [{"kind": "dead-row", "device": 1, "row": 3}]}
// Throws Failure, with the place "NAME:LINE:COLUMN" or "NAME: /devices/0/idcode", for anything
// else.
ChainDescription ParseChain(std::string_view json, const std::string &name);

class ChainTarget final : public Target {
 public:
  // Throws Failure, naming `name`, if the chain or one of the faults is impossible.
  ChainTarget(const ChainDescription &description, const std::string &name);

  void Write(Line line, bool level) override {
    constexpr sim_line kSimLines[] = {SIM_TCK, SIM_TMS, SIM_TDI};
    chain_.Write(kSimLines[static_cast<int>(line)], level);
  }
  bool Tdo() const override {
    return chain_.Tdo();
  }

  // The configuration memory as text, one line per row:
  //   DEVICE ROW HEX
  // devices from 1, rows from 0; the bit shifted first is the lowest bit of the last digit.
  std::string Memory();

 private:
  sim::Chain chain_;
};

}  // namespace tool
