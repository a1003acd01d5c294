// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The scans of a file, to compare files by. All files have a good header.
#pragma once

#include <string>

#include "tvb/bytes.h"

namespace fuzz {

// Whether a file has too many records, loops played out, or too many bits in them.
bool IsMuch(tvb::Bytes image);

// Whether a file has a header or trailer register.
bool HasPads(tvb::Bytes image);

// A line a scan: register, and in the order of shifting the bits of TDI, and of TDO as far as it is
// compared ('-' for bits that are not).
std::string Scans(tvb::Bytes image);

}  // namespace fuzz
