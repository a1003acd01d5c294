// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Encodes the data of scans, most of which many files repeat.
#pragma once

#include <cstdint>
#include <vector>

#include "tvb/block.h"
#include "tvb/bytes.h"

namespace tool {

// Gives the data block of register bytes as the file is to hold it. Blocks that took work to make
// are remembered, as many as 16 MB hold: masks above all come again and again.
class BlockEncoder {
 public:
  // `plain`: the file's header says that blocks are raw and have no mode byte; `choice` is then not
  // looked at.
  BlockEncoder(bool plain, const tvb::BlockChoice &choice);

  // Puts the block of `data` at the end of `out`.
  void Append(tvb::Buffer &out, tvb::Bytes data);

  // The same for `bits` register bits of which those that have a 0 in `care` may be anything: the
  // smallest block of FreeBitVersions(), the first of several. As it stands where nothing could
  // make it smaller.
  void AppendFree(tvb::Buffer &out, uint32_t bits, tvb::Bytes data, tvb::Bytes care);

 private:
  struct Known {
    uint64_t hash = 0;
    tvb::Buffer data;
    tvb::Buffer block;
  };

  bool IsRaw() const;
  const tvb::Buffer &Encode(tvb::Bytes data);

  bool plain_;
  tvb::BlockChoice choice_;
  std::vector<Known> known_;  // by hash
  tvb::Buffer last_;          // a block too large to be remembered
};

}  // namespace tool
