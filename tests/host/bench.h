// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A board whose JTAG lines end in a simulated chain, and whole downloads to it.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "guarded.h"
#include "host.h"
#include "shim.h"
#include "sim/host.h"

namespace bench {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

class Bench {
 public:
  // The chain as its text (sim/config.h).
  explicit Bench(const std::string &chain) : chain_(chain) {
    pins_.Record(false);
    pins_.OnWrite([this](shim::Line line, bool level) {
      chain_.Write(line == shim::kTck ? SIM_TCK : line == shim::kTms ? SIM_TMS : SIM_TDI, level);
    });
    pins_.OnRead([this] { return chain_.Tdo() ? 1 : 0; });
  }

  shim::Pins &pins() {
    return pins_;
  }
  sim::Chain &chain() {
    return chain_;
  }

  // Downloads a file from a guarded image; what the target saw and the driver said before is
  // forgotten.
  s32 Download(const Bytes &file) {
    chain_.ClearLog();
    shim::ClearMessages();
    const Guarded image(file);
    return TvbToVec(static_cast<download_context *>(pins_.context()), image.data(),
                    static_cast<u32>(file.size()));
  }

  // The scans of the last download: "IR " or "DR ", the TDI bits first to last, and " idle N" where
  // the TAP stayed in Run-Test/Idle for N clocks afterwards.
  Lines Scans() const {
    Lines lines;
    for (const sim::Scan &scan : chain_.Scans()) {
      lines.push_back((scan.kind == SIM_SCAN_IR ? "IR " : "DR ") + scan.tdi +
                      (scan.idle_clocks != 0 ? " idle " + std::to_string(scan.idle_clocks) : ""));
    }
    return lines;
  }

  // All rows of a device's memory.
  Lines Memory(uint32_t device) {
    Lines rows;
    for (uint32_t row = 0; row < sim_chain_device(chain_.get(), device)->rows; ++row) {
      rows.push_back(chain_.Row(device, row));
    }
    return rows;
  }

 private:
  shim::Pins pins_;
  sim::Chain chain_;
};

// The last `count` lines.
inline Lines Tail(const Lines &lines, size_t count) {
  return Lines(lines.end() - static_cast<long>(std::min(count, lines.size())), lines.end());
}

inline bool Said(const shim::Message &message) {
  const auto &all = shim::Messages();
  return std::find(all.begin(), all.end(), message) != all.end();
}

}  // namespace bench
