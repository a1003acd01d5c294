// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Nibble repetition: a block that is a whole number of copies of one pattern of nibbles.
#pragma once

#include <cstddef>

#include "tvb/bytes.h"

namespace tvb {

// True if `data`, read as nibbles, high nibble of each byte first, is one or more whole copies of
// its first `nibbles` nibbles. Only such a pattern fills the block to its last byte. Of an empty
// block only the empty pattern is one.
bool IsNibblePattern(Bytes data, size_t nibbles);

// The length in nibbles of the shortest pattern of `data`; at most 2 * data.size(), the block
// itself, and 0 for an empty block. Takes time linear in the block.
size_t ShortestNibblePattern(Bytes data);

// Puts the payload of `data` at the end of `out`: the number `nibbles`, then the pattern, two
// nibbles a byte, high one first; the low nibble after a pattern of odd length is 0.
// Throws Error if `nibbles` is not the length of a pattern of `data`.
void AppendNibble(Buffer &out, Bytes data, size_t nibbles);

}  // namespace tvb
