// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Measures the driver, built for the host, over a replay of the calls that it makes:
//
//   driver_bench [--quick] [--only AREA] [--json FILE] [FILE.tvb]...
//     AREA: scan, runtest, decode, session (the files that are given)
//   driver_bench --once FILE.tvb
//     one download: its processor time in seconds and its TCK periods
#include <fmt/core.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>

#include "cases.h"

namespace {

struct Options {
  bench::Effort effort = {15, 3e-3, 4000000};
  std::string only;
  std::string json;
  std::vector<bench::Image> images;

  bool Asks(const char *area) const {
    return only.empty() || only == area;
  }
};

bench::Image Named(const char *path) {
  bench::Image image = bench::ReadImage(path);
  image.name = std::filesystem::path(path).stem();
  return image;
}

Options Parse(int argc, char **argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--quick") {
      options.effort = {3, 1e-4, 65536};
    } else if (argument == "--only" && i + 1 < argc) {
      options.only = argv[++i];
    } else if (argument == "--json" && i + 1 < argc) {
      options.json = argv[++i];
    } else {
      options.images.push_back(Named(argv[i]));
    }
  }
  return options;
}

void Run(const Options &options) {
  bench::Results results;
  if (options.Asks("scan")) {
    bench::MeasureScans(results, options.effort);
  }
  if (options.Asks("runtest")) {
    bench::MeasureRunTests(results, options.effort);
  }
  if (options.Asks("decode")) {
    bench::MeasureDecoders(results, options.effort);
  }
  if (options.Asks("session")) {
    for (const bench::Image &image : options.images) {
      bench::MeasureDownload(results, options.effort, image);
    }
  }
  if (!options.json.empty()) {
    results.Write(options.json);
  }
}

}  // namespace

int main(int argc, char **argv) {
  try {
    if (argc == 3 && std::strcmp(argv[1], "--once") == 0) {
      const bench::Download download = bench::MeasureOnce(bench::ReadImage(argv[2]));
      fmt::print("{:.9f} {}\n", download.seconds, download.clocks);
    } else {
      Run(Parse(argc, argv));
    }
  } catch (const std::exception &error) {
    fmt::print(stderr, "driver_bench: {}\n", error.what());
    return 1;
  }
  return 0;
}
