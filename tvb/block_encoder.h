// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Encodes the data of many shifts, most of which files repeat, and chooses bits that may be
// anything.
#pragma once

#include <cstdint>
#include <vector>

#include "tvb/block.h"
#include "tvb/bytes.h"

namespace tvb {

// Versions of `data` that differ only in bits that have a 0 in `care`, which has the same size:
// `data` as it is, then the bits filled with zeros, with ones, with those of the byte before, with
// those of the most frequent byte. One of them is likely to be about the smallest in any encoding.
// All but the first depend on nothing but the bits that `care` has a 1 for.
std::vector<Buffer> FreeBitVersions(Bytes data, Bytes care);

// An Encoder. Blocks that took work to make are remembered, as many as 16 MB hold: masks above all
// come again and again.
class BlockEncoder {
 public:
  // Throws Error as EncodeBlock().
  explicit BlockEncoder(const BlockChoice &choice = {});

  // Puts the block of `bits` register bits at the end of `out`. Where `care` is not empty, bits
  // that have a 0 there may be anything: it is the smallest block of FreeBitVersions(), the first
  // of several, or that of the data as it stands where nothing could make it smaller.
  void operator()(Buffer &out, uint32_t bits, Bytes data, Bytes care);

 private:
  struct Known {
    uint64_t hash = 0;
    Buffer data;
    Buffer block;
  };

  bool IsAlwaysRaw(Bytes data) const;
  const Buffer &Encode(Bytes data);
  void AppendSmallest(Buffer &out, Bytes data, Bytes care);

  BlockChoice choice_;
  std::vector<Known> known_;  // by hash
  Buffer last_;               // a block that is not worth remembering, or too large
};

}  // namespace tvb
