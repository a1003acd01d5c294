// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/free_bits.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tool {
namespace {

uint8_t Merge(uint8_t data, uint8_t care, uint8_t filler) {
  return static_cast<uint8_t>((data & care) | (filler & ~care));
}

tvb::Buffer FilledWith(tvb::Bytes data, tvb::Bytes care, uint8_t filler) {
  tvb::Buffer filled(data.size());
  for (size_t i = 0; i < data.size(); ++i) {
    filled[i] = Merge(data[i], care[i], filler);
  }
  return filled;
}

tvb::Buffer FilledFromBefore(tvb::Bytes data, tvb::Bytes care) {
  tvb::Buffer filled(data.size());
  uint8_t before = 0;
  for (size_t i = 0; i < data.size(); ++i) {
    before = Merge(data[i], care[i], before);
    filled[i] = before;
  }
  return filled;
}

// The lowest of the bytes that occur most often among those without a free bit.
uint8_t MostFrequent(tvb::Bytes data, tvb::Bytes care) {
  std::array<size_t, 256> counts{};
  for (size_t i = 0; i < data.size(); ++i) {
    counts[data[i]] += care[i] == 0xFF;
  }
  return static_cast<uint8_t>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

}  // namespace

std::vector<tvb::Buffer> FreeBitVersions(tvb::Bytes data, tvb::Bytes care) {
  std::vector<tvb::Buffer> versions;
  versions.emplace_back(data.begin(), data.end());
  versions.push_back(FilledWith(data, care, 0x00));
  versions.push_back(FilledWith(data, care, 0xFF));
  versions.push_back(FilledFromBefore(data, care));
  versions.push_back(FilledWith(data, care, MostFrequent(data, care)));
  return versions;
}

}  // namespace tool
