// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The scans of a file, for comparing files. All files have a valid header.
#pragma once

#include <string>

#include "tvb/bytes.h"

namespace fuzz {

// Whether a file has too many records, counted with loops unrolled, or too many bits in them.
bool IsMuch(tvb::Bytes image);

// Whether a file has a header or trailer register.
bool HasPads(tvb::Bytes image);

// One line per scan: the register, then in shift order the TDI bits and the compared TDO bits ('-'
// for bits that are not compared).
std::string Scans(tvb::Bytes image);

}  // namespace fuzz
