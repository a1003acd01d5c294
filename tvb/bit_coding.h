// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One-symbol bit coding: one bit for the block's most frequent byte, nine for any other.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"

namespace tvb {

// The symbol that makes the payload of `data` shortest: its most frequent byte, the lowest of
// several.
uint8_t BestSymbol(Bytes data);

// Puts the payload of `data` at the end of `out`: the symbol, then a bit stream, most significant
// bit of each byte first: 0 for the symbol, 1 and eight bits, most significant first, for another
// byte. The bits left over in the last byte are 0.
void AppendBitCoding(Buffer &out, Bytes data, uint8_t symbol);

}  // namespace tvb
