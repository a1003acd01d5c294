// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/identity_check.h"

#include <algorithm>
#include <bit>

#include "tvb/player.h"
#include "tvb/text.h"

namespace tvb {
namespace {

constexpr uint32_t kIdcodeBits = 32;
constexpr int kEnoughBits = 16;

// BYPASS is all ones in every device.
bool IsBypass(const Shift &scan) {
  for (uint32_t bit = 0; bit < scan.bits; ++bit) {
    if (!BitOf(scan.tdi, bit)) {
      return false;
    }
  }
  return true;
}

// As the player does itself in every download to a chain.
bool IsPlayersQuery(const Shift &scan) {
  const ChainPlace place = PlaceToldBy(scan.tdi);
  return !place.IsAlone() && scan.bits == kInstructionBits * place.devices() &&
         (std::ranges::equal(scan.tdi, ChainInstructions(place, kIdcode)) ||
          std::ranges::equal(scan.tdi, ChainInstructions(place, kOtherIdcode)));
}

}  // namespace

std::optional<IdentityCheck::Risk> IdentityCheck::Scan(const Place &place, Opcode opcode,
                                                       const Shift &scan) {
  if (settled_ || (opcode == kSdr && ComparesIdcode(scan))) {
    settled_ = true;
    return std::nullopt;
  }
  if (waited_) {
    return End();
  }
  instructed_ = opcode == kSir;
  last_ = place;
  if (!instructed_) {
    return std::nullopt;
  }
  if (IsBypass(scan) || IsPlayersQuery(scan)) {
    last_.reset();
    return std::nullopt;
  }
  if (instruction_ && !std::ranges::equal(*instruction_, scan.tdi)) {
    return Found(place, "the file loads this second instruction, as for an erase,");
  }
  instruction_.emplace(scan.tdi.begin(), scan.tdi.end());
  return std::nullopt;
}

std::optional<IdentityCheck::Risk> IdentityCheck::Wait() {
  if (settled_ || !last_) {
    return std::nullopt;
  }
  waited_ = true;
  return instructed_ ? std::nullopt : End();
}

std::optional<IdentityCheck::Risk> IdentityCheck::End() {
  return waited_ && !settled_ ? Found(*last_, "the file waits after this scan, as after an erase,")
                              : std::nullopt;
}

std::optional<IdentityCheck::Risk> IdentityCheck::Found(const Place &scan, const char *what) {
  settled_ = true;
  return Risk{scan, std::string(what) +
                        " before it has compared an IDCODE: a wrong chip would be "
                        "erased; compare the IDCODE first (tvb compile "
                        "--require-idcode IDCODE)"};
}

bool ComparesIdcode(const Shift &scan) {
  if (scan.mask.empty() || scan.tdo.empty()) {
    return false;
  }
  uint32_t compared = 0;  // of the last 32 bits; the first of them is bit 0
  uint32_t zeros = 0;     // those of them that are expected to be 0
  for (uint32_t bit = 0; bit < scan.bits; ++bit) {
    const bool compares = BitOf(scan.mask, bit);
    compared = compared >> 1 | uint32_t{compares} << 31;
    zeros = zeros >> 1 | uint32_t{compares && !BitOf(scan.tdo, bit)} << 31;
    if (bit + 1 >= kIdcodeBits && (zeros & 1) == 0 && zeros != 0 &&
        std::popcount(compared) >= kEnoughBits) {
      return true;
    }
  }
  return false;
}

std::string InstructionLengthRisk(uint32_t bits) {
  return "this instruction has " + std::to_string(bits) +
         " bits, but before every file the player shifts " + std::to_string(kInstructionBits) +
         " bits a device, " + Hex(kIdcode) + " or " + Hex(kOtherIdcode) +
         ", to read the IDCODE; see that the device takes that for nothing harmful";
}

}  // namespace tvb
