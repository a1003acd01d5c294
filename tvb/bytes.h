// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Runs of bytes: the view that arguments are passed by and the buffer that results are kept in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tvb {

using Buffer = std::vector<uint8_t>;

// A view of bytes that somebody else owns. Where no contract says otherwise it is read during the
// call it is passed to and kept by nobody, so a temporary buffer may stand in an argument.
//
// Register data in these bytes has the order of the file and of the player: register bit d, d = 0
// being shifted first, is bit 7 - (d mod 8) of byte d / 8. So the first byte goes out first, each
// byte from its most significant bit down, and the unused bits of a partial last byte are its
// lowest ones.
using Bytes = std::span<const uint8_t>;

// Puts all of `bytes`, which must not lie in `out` itself, at the end of `out`.
inline void Append(Buffer &out, Bytes bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

// How many bytes a register of `bits` bits takes.
inline size_t BytesOfBits(uint32_t bits) {
  return (static_cast<size_t>(bits) + 7) / 8;
}

}  // namespace tvb
