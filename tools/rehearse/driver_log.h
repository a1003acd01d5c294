// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver's log: what it hands to the kernel's log and to the log module, as lines.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tool {

// Records come with their line ends, without, or a line in several records. One that ends its line
// is a line of its own, and so is one of loading and unloading; others are joined, in their order,
// until such a one comes.
class DriverLog {
 public:
  // A line without its end and the board's time, in nanoseconds, at which its first record came.
  using Sink = std::function<void(uint64_t time, std::string_view line)>;

  // Every line goes to `sink`.
  explicit DriverLog(Sink sink);

  // One record as formatted. `whole`: it is a line even though it has no end.
  void Add(uint64_t time, std::string_view text, bool whole);

  // Ends the line that was joined so far, if there is one.
  void Flush();

 private:
  Sink sink_;
  std::string joined_;
  uint64_t joined_since_ = 0;
};

}  // namespace tool
