// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One download on this machine, from handing over the image to its end.
#pragma once

#include <functional>
#include <string>

#include "tools/board/device.h"
#include "tools/cli/command.h"
#include "tvb/bytes.h"

namespace tool {

// Keeps SIGINT and SIGTERM from ending the process while it lives, and counts them.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts &) = delete;
  Interrupts &operator=(const Interrupts &) = delete;

  static int Count();
};

struct DownloadEnd {
  // kDone; kFailed; kBad: nothing was driven; kCancelled.
  ExitCode code = kDone;
  bool left = false;  // cancelled, but not waited for: the status is not that of the end
  BoardStatus status;
};

// Has the framework download an image. `name`: by which the framework is to tell of it; a path's
// last part is taken. `total_clocks`: how many the download has. `progress` is
// called with the status now and then. The first signal of `Interrupts` cancels the download, the
// second one leaves it alone. Throws Failure if the framework does not take the image.
DownloadEnd DownloadImage(const Device &device, const std::string &name, tvb::Bytes image,
                          uint64_t total_clocks,
                          const std::function<void(const BoardStatus &status)> &progress);

}  // namespace tool
