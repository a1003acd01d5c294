// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The file's variable-length numbers: groups of 7 bits, least significant group first, one group a
// byte, bit 7 of a byte saying that another follows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tvb/bytes.h"

namespace tvb {

// Numbers are 32-bit quantities, but the player extends bit 31 as a sign. Wherever a value is a
// length, a count or a rate, this is therefore the largest that means itself.
constexpr uint32_t kLargestNumber = 0x7FFFFFFF;

// Puts `value` at the end of `out` in its shortest form, one to five bytes.
void AppendNumber(Buffer &out, uint32_t value);

// How many bytes AppendNumber() writes for `value`.
size_t NumberSize(uint32_t value);

}  // namespace tvb
