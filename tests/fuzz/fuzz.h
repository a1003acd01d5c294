// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a fuzz target is: a program that takes any bytes at all and ends only over a fault of ours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/cli/output_file.h"

// Each target defines this one function; the fuzzer, or replay.cc, calls it with one input after
// the other. The bytes are a block of exactly that size, so that a read past them is seen.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

// Says what does not hold, and aborts, unless `holds`. `detail` may say more.
void Require(bool holds, const std::string &what, const std::string &detail = {});

// Gives what `write` writes.
std::string Written(const std::function<void(tool::OutputFile &out)> &write);

// A file in memory, for what wants to open one.
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
