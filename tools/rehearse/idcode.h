// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Device identification codes: 32 bits, of which bit 0 is 1 and leaves the device first, bits 11 to
// 1 name the manufacturer, 27 to 12 the part and 31 to 28 its revision (IEEE 1149.1).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/cli/bit_row.h"
#include "tvb/bytes.h"

namespace tool {

// Where in a scan an IDCODE is compared: the first of 32 bits in a row that are all under the mask,
// no other bit being under it, and that expect what can be an IDCODE. None if it is not one.
std::optional<size_t> IdcodePlace(const BitRow &expected, const BitRow &mask);

// Whether one of the instructions, 8 bits each, that an SIR record shifts is one by which the
// driver reads the IDCODE itself, 6 or 224. The order of bits is told at tvb::Bytes.
bool SelectsIdcode(const tvb::Buffer &instructions);

// 32 bits of a row as a number, bit `first` being its lowest.
uint32_t WordAt(const BitRow &row, size_t first);

// Tells in a sentence whether an IDCODE that differs from the expected one is of another revision
// of the part or of another part.
std::string DescribeIdcodes(uint32_t expected, uint32_t read);

}  // namespace tool
