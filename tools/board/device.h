// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The framework's device on this machine: a folder of attributes. docs/ABI describes them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/rehearse/explain.h"
#include "tvb/bytes.h"

namespace tool {

// What the attributes say of the download that runs, or else of the last one.
struct BoardStatus {
  std::string state;   // "idle", "loading" or "running"
  std::string result;  // these two are of the last one that has ended
  std::string error;
  std::string file;
  std::string crc;
  uint64_t clocks = 0;
  uint64_t total_clocks = 0;  // 0: unknown
  uint64_t elapsed_ms = 0;
  uint64_t reads = 0;
  std::optional<BoardRead> last_read;

  // Whether a comparison of the file was the last thing that happened.
  bool EndedComparing() const;
};

// A time of the board for people: "less than 1 ms", "207 ms", "12.3 s", "1:20 min".
std::string BoardTimeText(uint64_t ms);

class Device {
 public:
  // `folder`: of the attributes; empty: where the framework has them, be it of its own or of a
  // device tree's node. Throws Failure if they are not there.
  explicit Device(const std::string &folder);

  const std::string &folder() const {
    return folder_;
  }

  // The text of an attribute, without its line end. Both throw Failure if the system refuses.
  std::string Read(const std::string &attribute) const;
  void Write(const std::string &attribute, const std::string &text) const;

  BoardStatus Status() const;

  // Hands an image to the framework, which then begins to download it. Throws Failure if it refuses
  // to, and drops the image if `interrupted` says so meanwhile, which returns false.
  bool HandOver(tvb::Bytes image, bool (*interrupted)()) const;

  // Has the framework forget what it was given of an image that it does not download.
  void DropImage() const;

  // Whether an image that was handed over is still being downloaded.
  bool IsBusy() const;

  // Waits until the state changes or a signal comes, but not longer.
  void WaitForChange(std::chrono::milliseconds longest) const;

  // Asks the framework to end the download. One that has ended meanwhile is not cancelled.
  void Cancel() const;

  // Whether the framework refused the image that was handed over last, since it was busy. The
  // status is then that of another download.
  bool RefusedAsBusy() const;

 private:
  void SendImage(tvb::Bytes image, bool (*interrupted)()) const;

  // Writes an attribute that may well refuse it, where there is nothing to do any more.
  static void Try(const std::string &attribute, std::string_view text);

  std::string folder_;
  std::string upload_;  // where images are written, with the names of the kernel's firmware class
};

}  // namespace tool
