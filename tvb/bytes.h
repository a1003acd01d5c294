// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Byte sequences: the view used for arguments and the buffer used for results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tvb {

using Buffer = std::vector<uint8_t>;

// A view of bytes owned by someone else. Unless a contract says otherwise, a function reads it only
// during the call and does not keep it, so a temporary buffer may be passed.
//
// Register data in these bytes has the bit order of the file and of the player: register bit d,
// where d = 0 is shifted first, is bit 7 - (d mod 8) of byte d / 8. So the first byte goes out
// first, each byte most significant bit first, and the unused bits of a partial last byte are its
// lowest ones.
using Bytes = std::span<const uint8_t>;

// Appends `bytes`, which must not lie in `out` itself, to `out`.
inline void Append(Buffer &out, Bytes bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

// The number of bytes that hold a register of `bits` bits.
inline size_t BytesOfBits(uint32_t bits) {
  return (static_cast<size_t>(bits) + 7) / 8;
}

// Register bit `bit` of `bytes`; 0 where they have no such bit.
inline bool BitOf(Bytes bytes, uint32_t bit) {
  return bit / 8 < bytes.size() && (bytes[bit / 8] >> (7 - bit % 8) & 1);
}

}  // namespace tvb
