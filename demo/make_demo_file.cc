// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// make_demo_file FILE: writes the command file of the demo. It programs a part of 64 rows of 128
// bits, the second of three devices, with a text, and verifies it.
#include <cstdio>
#include <exception>

#include "demo/part_file.h"

namespace {

constexpr demo::Part kPart = {0x0A014C35, 64, 128, 1000, 50};
constexpr demo::Place kPlace = {1, 1};
constexpr char kText[] = "This configuration was programmed over four GPIO lines. ";

tvb::Buffer MakeFile() {
  const std::vector<demo::Bits> rows = demo::RowsOfText(kPart, kText);
  demo::PartFile file(kPlace, kPart);
  file.CheckIdcode();
  file.Erase();
  file.Program(rows);
  file.Verify(rows);
  return file.Finish();
}

bool Save(const char *path, const tvb::Buffer &bytes) {
  std::FILE *file = std::fopen(path, "wb");
  if (file == nullptr) {
    return false;
  }
  const bool whole = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && whole;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_demo_file FILE\n");
    return 2;
  }
  try {
    if (!Save(argv[1], MakeFile())) {
      std::perror(argv[1]);
      return 1;
    }
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_demo_file: %s\n", error.what());
    return 1;
  }
  return 0;
}
