// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Where in the chain the target is, and how a file tells the player.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/compile/joined_scan.h"

namespace tool {

// `before` devices lie between TDI and the target, `after` between the target and TDO.
struct ChainPlace {
  uint32_t before = 0;
  uint32_t after = 0;

  bool IsAlone() const {
    return before == 0 && after == 0;
  }
  bool operator==(const ChainPlace &other) const {
    return before == other.before && after == other.after;
  }
};

// The player reads the target's place off a file's first record, if that is a shift of the
// instruction register: all bytes are ones (BYPASS) but the target's. Gives that place for a scan
// that can be read so: two bytes or more, one that is not all ones, and nothing compared.
std::optional<ChainPlace> PlaceToldBy(const ScanData &instruction_scan);

// The place that header and trailer lengths tell: data registers of bypassed devices have one bit
// each, their instruction registers 8. Nothing if all four are 0.
std::optional<ChainPlace> PlaceOfPads(uint32_t hir, uint32_t tir, uint32_t hdr, uint32_t tdr);

// The data of such a shift that tells `place`: BYPASS for every other device and `instruction`,
// whose least significant bit goes out first, for the target. It must not be all ones.
tvb::Buffer OpeningData(const ChainPlace &place, uint8_t instruction);

}  // namespace tool
