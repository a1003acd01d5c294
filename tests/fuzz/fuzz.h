// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A fuzz target: a program that takes any bytes and fails only on a fault of ours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/cli/output_file.h"

// The one function that each target defines; libFuzzer calls it once per input. The
// bytes are in a block of exactly `size`, so that reads past the end are detected.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

// Unless `holds`, prints the violated condition and `detail`, which may be empty, and aborts.
void Require(bool holds, const std::string &what, const std::string &detail = {});

// Returns what `write` writes.
std::string Written(const std::function<void(tool::OutputFile &out)> &write);

// A file in memory, for code that opens a file.
class MemoryFile {
 public:
  MemoryFile(const uint8_t *data, size_t size);
  ~MemoryFile();
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  std::string path() const {
    return "/dev/fd/" + std::to_string(fd_);
  }

 private:
  int fd_;
};

}  // namespace fuzz
