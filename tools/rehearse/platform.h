// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel, the log module and the framework as a rehearsal gives them to the driver, and a
// download by the driver on them. The symbols that its host library leaves undefined are in
// platform.cc.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/playhead.h"
#include "tvb/bytes.h"

namespace tool {

// What the driver hands to the kernel's log and to the log module, as messages. Records come with
// their line ends, without, or a message in several records. One that ends its line is a message of
// its own, and so is one of loading and unloading; others are joined, in their order, until such a
// one comes.
class DriverLog {
 public:
  // A message without its end and the board's time, in nanoseconds, at which its first record came.
  using Sink = std::function<void(uint64_t time, std::string_view message)>;

  // Every message goes to `sink`.
  explicit DriverLog(Sink sink);

  // One record as formatted. `whole`: it is a message even though it has no end.
  void Add(uint64_t time, std::string_view text, bool whole);

  // Ends the message that was joined so far, if there is one.
  void Flush() {
    if (!joined_.empty()) {
      FlushJoined();
    }
  }

 private:
  void FlushJoined();

  Sink sink_;
  std::string joined_;
  uint64_t joined_since_ = 0;
};

// What stopped a download.
enum class DriverStop {
  kNothing,
  kMismatch,  // a comparison failed
  kNoMemory,  // it could not hold a scan or a register
};

struct DriverResult {
  // The driver says that it played the file; a comparison in the last record may have failed, which
  // it does not see. If nothing has stopped it and it says no, it found the file malformed, or
  // could not hold a header or trailer.
  bool done = false;
  DriverStop stop = DriverStop::kNothing;
  uint64_t position = 0;  // of the image: the next byte that it would have read
};

// What the driver shows while it runs.
DriverView ViewDriver();

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

  // Loads the driver, has it play `image` (not empty, less than 4 GiB) on `lines`, and unloads it.
  // Its state is as at load only in a process that has not run it yet. `on_tick` is called now and
  // then, between two calls of the driver.
  DriverResult Play(Lines &lines, tvb::Bytes image, std::function<void()> on_tick);

 private:
  std::unique_ptr<struct PlatformState> state_;
};

}  // namespace tool
