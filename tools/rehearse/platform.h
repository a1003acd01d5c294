// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel, the log module and the framework that a rehearsal provides to the driver, and a
// download by the driver on them. platform.cc defines the symbols that the driver's host library
// leaves undefined.
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

// Collects what the driver writes to the kernel log and to the log module into messages. A record
// may have a line end or not, and a message may span several records. A record with a line end is a
// message of its own, as is one of loading and unloading; others are joined, in order, until such a
// record comes.
class DriverLog {
 public:
  // A message without its line end, and the board's time of its first record in nanoseconds.
  using Sink = std::function<void(uint64_t time, std::string_view message)>;

  // Passes every message to `sink`.
  explicit DriverLog(Sink sink);

  // Takes one formatted record. `whole`: it is a message even without a line end.
  void Add(uint64_t time, std::string_view text, bool whole);

  // Ends the message joined so far, if any.
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

// The reason why a download stopped.
enum class DriverStop {
  kNothing,
  kMismatch,  // a comparison failed
  kNoMemory,  // no memory for a scan or a register
};

struct DriverResult {
  // The driver's own result: true if it played the file. It does not see a failed comparison in the
  // last record. False without a stop reason means that it found the file malformed or had no
  // memory for a header or trailer.
  bool done = false;
  DriverStop stop = DriverStop::kNothing;
  uint64_t position = 0;  // in the image: the next byte to be read
};

// The driver's visible state while it runs.
DriverView ViewDriver();

// What is told now and then while the driver runs, between two of its calls.
struct Ticks {
  std::function<void()> tell;
  uint32_t calls = 1 << 18;  // pin calls from one to the next
};

// Only one platform exists at a time; the driver's calls reach that one. Memory is the host's, but
// blocks are limited to the kernel's largest size, and memory not requested zeroed is filled, so
// that rehearsals are reproducible. The destructor frees what the driver has not.
class Platform {
 public:
  // Waits advance `clock` and messages go to `log`; both outlive the platform.
  Platform(BoardClock &clock, DriverLog &log);
  ~Platform();
  Platform(const Platform &) = delete;
  Platform &operator=(const Platform &) = delete;

  // Loads the driver. Its state is as at load only in a process that has not run it before.
  void Load();

  // Has the loaded driver play `image` (not empty, less than 4 GiB) on `lines`.
  DriverResult Play(Lines &lines, tvb::Bytes image, Ticks ticks);

  void Unload();

 private:
  std::unique_ptr<struct PlatformState> state_;
};

}  // namespace tool
