// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Encodes the data of shifts, which files often repeat, and chooses values for don't-care bits.
#pragma once

#include <cstdint>
#include <vector>

#include "tvb/block.h"
#include "tvb/bytes.h"

namespace tvb {

// Versions of `data` that differ only in the don't-care bits, those with a 0 in `care`, which has
// the same size: `data` unchanged, then with these bits filled with zeros, with ones, from the
// previous byte, and from the most frequent byte. In any encoding one of them is likely to be close
// to the smallest. All but the first depend only on the bits that have a 1 in `care`.
std::vector<Buffer> FreeBitVersions(Bytes data, Bytes care);

// An Encoder. It caches up to 16 MB of blocks that were costly to make, since masks in particular
// recur often.
class BlockEncoder {
 public:
  // Throws Error as EncodeBlock() does.
  explicit BlockEncoder(const BlockChoice &choice = {});

  // Appends the block of `bits` register bits to `out`. If `care` is not empty, bits with a 0 in it
  // are don't-care: the result is the smallest block of FreeBitVersions(), the first of equals, or
  // that of the unchanged data if nothing can make it smaller.
  void operator()(Buffer &out, uint32_t bits, Bytes data, Bytes care);

 private:
  struct Known {
    uint64_t hash = 0;
    Buffer data;
    Buffer block;
  };

  bool IsAlwaysRaw(Bytes data) const;
  void Encode(Buffer &out, Bytes data);
  void EncodeSmallest(Buffer &out, Bytes data, Bytes care);

  BlockChoice choice_;
  std::vector<Known> known_;  // by hash
};

}  // namespace tvb
