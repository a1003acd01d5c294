// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// make_demo_file FILE: writes the command file of the demo, which programs a text into a part of 64
// rows of 128 bits, the second of three devices, and verifies it.
#include <cstdio>
#include <exception>

#include "demo/part_file.h"
#include "tvb/seal.h"

namespace {

constexpr demo::Part kPart = {0x0A014C35, 64, 128, 1000, 50};
constexpr tvb::ChainPlace kPlace = {1, 1};
constexpr char kText[] = "This configuration was programmed over four GPIO lines. ";

// Slow enough to be watched.
constexpr uint32_t kFrequency = 2000;

tvb::Buffer MakeFile() {
  demo::PartFile file(kPlace, kPart);
  file.writer().Frequency(kFrequency);
  tvb::Buffer image = file.Whole(demo::RowsOfText(kPart, kText));
  tvb::Seal(image);
  return image;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_demo_file FILE\n");
    return 2;
  }
  try {
    return demo::Save(argv[1], MakeFile()) ? 0 : 1;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_demo_file: %s\n", error.what());
    return 1;
  }
}
