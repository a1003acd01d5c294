// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// LZW with one end code that moves: codes 0 to 255 are bytes, 256 restarts the dictionary, 257 and
// up are strings, and the value of the code counter itself ends the stream.
//
// The counter starts at 257 and goes up by one with every data code. When it would reach the size
// of the dictionary, 512 << k, it goes back to 257 of itself, with no code in the stream, and the
// dictionary starts afresh. A code is one of the values 0 to the counter, in truncated binary: w
// bits where the value is below (2 << w) - counter - 1 and w + 1 bits above, w being 8, 9, 10 or 11
// for a counter below 512, 1024, 2048 or above. Bits fill each byte from its lowest bit up.
#pragma once

#include <cstddef>

#include "tvb/bytes.h"

namespace tvb {

// Dictionaries hold 512 << k codes, k being 0 to this.
constexpr int kLargestLzwDictionary = 3;

// Puts the payload of `data` at the end of `out`: the byte k, then the codes and the end code. The
// unused bits of the last byte are 0.
// `clear_every`: put a restart (code 256) after each so many data codes; 0: never, the counter's
// own wrap being enough.
// Throws Error if k is not 0 to 3.
void AppendLzw(Buffer &out, Bytes data, int k, size_t clear_every = 0);

}  // namespace tvb
