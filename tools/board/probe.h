// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The IDCODEs of this machine's chain. Before each file the driver reads one by itself and writes
// it to its log, so a file that does nothing but name a place in the chain tells which device is
// there.
#pragma once

#include <cstdint>
#include <string>

#include "tools/board/device.h"
#include "tvb/bytes.h"
#include "tvb/player.h"

namespace tool {

// The kernel's log, from when this was made.
class KernelLog {
 public:
  // `path`: empty for the kernel's own. Throws Failure if it cannot be read.
  explicit KernelLog(const std::string &path);
  ~KernelLog();
  KernelLog(const KernelLog &) = delete;
  KernelLog &operator=(const KernelLog &) = delete;

  // What has been written since then or the last call.
  std::string Read();

 private:
  int fd_;
};

// A sealed file that has the device at that place selected by its IDCODE instruction, and does
// nothing else.
tvb::Buffer ProbeFile(const tvb::ChainPlace &place);

// What is read as the IDCODE of the device at that place. Throws Failure if the download of its
// ProbeFile() fails or is cancelled, or if the log has no IDCODE.
uint32_t ProbeIdcode(const Device &device, const std::string &log, const tvb::ChainPlace &place);

// Why a number that was read cannot be an IDCODE, in words; empty if it can be one.
std::string WhyNoIdcode(uint32_t idcode);

}  // namespace tool
