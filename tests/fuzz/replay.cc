// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Feeds a fuzz target the named inputs, files or folders of them, without a fuzzer:
//   TARGET.replay PATH...
// Names each input before it runs, and ends as the target does.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "fuzz/fuzz.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path &path) {
  if (!fs::is_directory(path)) {
    return {path};
  }
  std::vector<fs::path> files;
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool Replay(const fs::path &path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    fprintf(stderr, "%s: cannot be read\n", path.c_str());
    return false;
  }
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const auto block = std::make_unique<uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block.get());
  fprintf(stderr, "--- %s\n", path.c_str());
  LLVMFuzzerTestOneInput(block.get(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path &path : FilesOf(argv[i])) {
      if (!Replay(path)) {
        return 2;
      }
      ++count;
    }
  }
  fprintf(stderr, "%zu inputs replayed\n", count);
  return count > 0 ? 0 : 2;
}
