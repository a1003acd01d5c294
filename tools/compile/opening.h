// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// How a TVB file begins: the target's place in the chain, and the comparison of its IDCODE.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/compile/record_writer.h"
#include "tvb/player.h"
#include "tvb/record.h"

namespace tool {

// An IDCODE to compare under a mask.
struct RequiredIdcode {
  uint32_t value = 0;
  uint32_t mask = 0xFFFFFFFF;
};

// Parses "IDCODE" or "IDCODE/MASK", hexadecimal numbers; none if the text has another form.
std::optional<RequiredIdcode> ParseIdcode(std::string_view text);

// What is wrong with such a text as an option's value; empty if nothing is.
std::string CheckIdcode(const std::string &text);

// The place that the player would derive from an instruction scan as a file's first record. Nothing
// unless the scan is unambiguous: BYPASS for all devices but one, and nothing compared.
std::optional<tvb::ChainPlace> PlaceToldBy(const tvb::Shift &scan);

// The place that header and trailer lengths imply: the data register of a bypassed device has one
// bit. Nothing if all four lengths are 0.
std::optional<tvb::ChainPlace> PlaceOfPads(const tvb::PadBits &pads);

// Writes the two scans that compare the IDCODE of the device at that place, which `instruction`
// selects, with the other devices in BYPASS.
void CompareIdcode(RecordWriter &writer, const tvb::ChainPlace &place, uint8_t instruction,
                   const RequiredIdcode &idcode);

}  // namespace tool
