// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Run-length encoding of one escape byte.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"

namespace tvb {

// The escape byte that makes the payload of `data` shortest; the lowest of several.
uint8_t BestEscapeByte(Bytes data);

// Puts the payload of `data` at the end of `out`: the escape byte, then every other byte as itself
// and every run of r escape bytes as the escape byte followed by the number r - 1.
void AppendRunLength(Buffer &out, Bytes data, uint8_t escape);

}  // namespace tvb
