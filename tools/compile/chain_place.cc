// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/chain_place.h"

namespace tool {
namespace {

constexpr uint8_t kBypass = 0xFF;

}  // namespace

std::optional<ChainPlace> PlaceToldBy(const ScanData &instruction_scan) {
  const tvb::Bytes tdi = instruction_scan.tdi;
  if (instruction_scan.bits % 8 != 0 || tdi.size() < 2 || instruction_scan.compares) {
    return std::nullopt;
  }
  // The first byte goes through the whole chain to the device nearest TDO.
  std::optional<size_t> target;
  for (size_t i = 0; i < tdi.size(); ++i) {
    if (tdi[i] != kBypass) {
      if (target) {
        return std::nullopt;
      }
      target = i;
    }
  }
  if (!target) {
    return std::nullopt;
  }
  return ChainPlace{static_cast<uint32_t>(tdi.size() - 1 - *target),
                    static_cast<uint32_t>(*target)};
}

std::optional<ChainPlace> PlaceOfPads(uint32_t hir, uint32_t tir, uint32_t hdr, uint32_t tdr) {
  if (hir == 0 && tir == 0 && hdr == 0 && tdr == 0) {
    return std::nullopt;
  }
  if (hdr == 0 && tdr == 0) {
    return ChainPlace{tir / 8, hir / 8};
  }
  return ChainPlace{tdr, hdr};
}

tvb::Buffer OpeningData(const ChainPlace &place, uint8_t instruction) {
  uint8_t first_bit_high = 0;
  for (int bit = 0; bit < 8; ++bit) {
    first_bit_high |= static_cast<uint8_t>((instruction >> bit & 1) << (7 - bit));
  }
  tvb::Buffer data(place.after, kBypass);
  data.push_back(first_bit_high);
  data.resize(data.size() + place.before, kBypass);
  return data;
}

}  // namespace tool
