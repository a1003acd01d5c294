// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Data some bits of which may be anything.
#pragma once

#include <vector>

#include "tvb/bytes.h"

namespace tool {

// Versions of `data` that differ only in bits that have a 0 in `care`, which has the same size:
// `data` as it is, then the bits filled with zeros, with ones, with those of the byte before, with
// those of the most frequent byte. One of them is likely to be about the smallest in any encoding.
// All but the first depend on nothing but the bits that `care` has a 1 for.
std::vector<tvb::Buffer> FreeBitVersions(tvb::Bytes data, tvb::Bytes care);

}  // namespace tool
