// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What of the driver is measured.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "measure.h"

namespace bench {

// Single scans of many lengths, and clocks in Run-Test/Idle.
void MeasureScans(Results &results, const Effort &effort);
void MeasureRunTests(Results &results, const Effort &effort);

// Data blocks, over a copy of what they decode to.
void MeasureDecoders(Results &results, const Effort &effort);

// Whole downloads, from TvbToVec to its return.
struct Image {
  std::string name;
  std::vector<uint8_t> bytes;
};
Image ReadImage(const std::string &path);  // throws std::runtime_error
void MeasureDownload(Results &results, const Effort &effort, const Image &image);

// The processor time of one download, after one that is not measured, and its TCK periods.
struct Download {
  double seconds;
  size_t clocks;
};
Download MeasureOnce(const Image &image);

}  // namespace bench
