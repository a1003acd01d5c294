// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/idcode.h"

#include <fmt/format.h>

namespace tool {
namespace {

constexpr size_t kBits = 32;
constexpr uint32_t kNoManufacturer = 0x7F;  // reserved: no device has it

uint32_t ManufacturerOf(uint32_t idcode) {
  return idcode >> 1 & 0x7FF;
}

uint32_t PartOf(uint32_t idcode) {
  return idcode >> 12 & 0xFFFF;
}

uint32_t RevisionOf(uint32_t idcode) {
  return idcode >> 28;
}

bool CanBe(uint32_t idcode) {
  return (idcode & 1) != 0 && ManufacturerOf(idcode) != kNoManufacturer;
}

// In a file's bytes the bit that is shifted first, an instruction's lowest, is the highest.
uint8_t InstructionOf(uint8_t byte) {
  uint8_t instruction = 0;
  for (int bit = 0; bit < 8; ++bit) {
    instruction |= static_cast<uint8_t>((byte >> bit & 1) << (7 - bit));
  }
  return instruction;
}

}  // namespace

uint32_t WordAt(const BitRow &row, size_t first) {
  uint32_t word = 0;
  for (size_t bit = 0; bit < kBits; ++bit) {
    word |= static_cast<uint32_t>(row[first + bit]) << bit;
  }
  return word;
}

std::optional<size_t> IdcodePlace(const BitRow &expected, const BitRow &mask) {
  if (mask.Ones() != kBits) {
    return std::nullopt;
  }
  size_t first = 0;
  while (!mask[first]) {
    ++first;
  }
  if (first + kBits > mask.size() || WordAt(mask, first) != 0xFFFFFFFF ||
      !CanBe(WordAt(expected, first))) {
    return std::nullopt;
  }
  return first;
}

bool SelectsIdcode(const tvb::Buffer &instructions) {
  for (const uint8_t byte : instructions) {
    if (InstructionOf(byte) == 6 || InstructionOf(byte) == 224) {
      return true;
    }
  }
  return false;
}

std::string DescribeIdcodes(uint32_t expected, uint32_t read) {
  if (PartOf(expected) == PartOf(read) && ManufacturerOf(expected) == ManufacturerOf(read) &&
      CanBe(read)) {
    return fmt::format(
        "this looks like an IDCODE: it is the right part (0x{:07X}) in revision {} where the file "
        "wants revision {}",
        expected & 0x0FFFFFFF, RevisionOf(read), RevisionOf(expected));
  }
  if (!CanBe(read)) {
    return fmt::format("this looks like an IDCODE, but 0x{:08X}, which was read, cannot be one",
                       read);
  }
  return fmt::format(
      "this looks like an IDCODE: it is another part, manufacturer 0x{:03X} part 0x{:04X} where "
      "the file wants manufacturer 0x{:03X} part 0x{:04X}",
      ManufacturerOf(read), PartOf(read), ManufacturerOf(expected), PartOf(expected));
}

}  // namespace tool
