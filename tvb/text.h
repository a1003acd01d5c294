// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Numbers of the file as text for messages.
#pragma once

#include <cstdint>
#include <string>

#include "tvb/number.h"

namespace tvb {

// "0x5E": upper case, at least two digits.
std::string Hex(uint64_t value);

// The value in decimal; "a number of more than 32 bits" if it is lossy.
std::string NumberText(const NumberView &number);

// "a length of 24 bits"; "a length that takes more than 32 bits" if it is lossy.
std::string LengthText(const NumberView &length);

// "1 byte", "7 bytes".
std::string Count(uint64_t count, const std::string &noun);

}  // namespace tvb
