// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "fuzz/fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace fuzz {

void Require(bool holds, const std::string &what, const std::string &detail) {
  if (!holds) {
    fprintf(stderr, "does not hold: %s\n%s\n", what.c_str(), detail.c_str());
    abort();
  }
}

// A pipe leaves no file behind, whatever happens.
std::string Written(const std::function<void(tool::OutputFile &out)> &write) {
  int ends[2];
  Require(pipe(ends) == 0, "there is a pipe");
  std::string text;
  std::thread reader([&text, from = ends[0]] {
    char some[4096];
    ssize_t count;
    while ((count = read(from, some, sizeof some)) > 0) {
      text.append(some, static_cast<size_t>(count));
    }
  });
  const auto join = [&] {
    close(ends[1]);
    reader.join();
    close(ends[0]);
  };
  try {
    tool::OutputFile out("/dev/fd/" + std::to_string(ends[1]));
    write(out);
    out.Commit();
  } catch (...) {
    join();
    throw;
  }
  join();
  return text;
}

MemoryFile::MemoryFile(const uint8_t *data, size_t size) : fd_(memfd_create("fuzz", MFD_CLOEXEC)) {
  Require(write(fd_, data, size) == static_cast<ssize_t>(size), "there is a file in memory");
}

MemoryFile::~MemoryFile() {
  close(fd_);
}

}  // namespace fuzz
