// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel, the log module and the framework as a rehearsal gives them to the driver: the symbols
// that its host library leaves undefined are in platform.cc.
#pragma once

#include <cstddef>
#include <unordered_set>

#include "tools/rehearse/board_clock.h"
#include "tools/rehearse/driver_log.h"

struct tvb_driver;

namespace tool {

// One platform at a time: the driver's calls reach the one that exists. Memory is the host's, but
// no block is larger than the kernel's largest, and what the driver did not ask to be zeroed is
// filled, so that a rehearsal comes out the same each time. What the driver has not freed by the
// end of the platform goes with it.
class Platform {
 public:
  // Waits pass on `clock` and messages go to `log`; both outlive the platform.
  Platform(BoardClock &clock, DriverLog &log);
  ~Platform();
  Platform(const Platform &) = delete;
  Platform &operator=(const Platform &) = delete;

  // The driver that has registered with the framework; null while none has.
  const tvb_driver *driver() const {
    return driver_;
  }

  // Blocks of memory that the driver holds now.
  size_t live_blocks() const {
    return blocks_.size();
  }

 private:
  friend struct PlatformAccess;

  BoardClock &clock_;
  DriverLog &log_;
  const tvb_driver *driver_ = nullptr;
  std::unordered_set<void *> blocks_;
};

}  // namespace tool
