// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/block_encoder.h"

#include <algorithm>
#include <utility>

#include "tools/compile/free_bits.h"
#include "tools/compile/hash.h"

namespace tool {
namespace {

constexpr size_t kEntries = 1 << 9;
constexpr size_t kLargestKnown = 1 << 14;

bool AllOnes(tvb::Bytes bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0xFF; });
}

}  // namespace

BlockEncoder::BlockEncoder(bool plain, const tvb::BlockChoice &choice)
    : plain_(plain), choice_(choice) {
  if (!IsRaw()) {
    known_.resize(kEntries);
  }
}

void BlockEncoder::Append(tvb::Buffer &out, tvb::Bytes data) {
  const bool smallest_is_raw = !choice_.encoding && tvb::RawIsSmallest(data.size());
  if (!IsRaw() && !smallest_is_raw) {
    tvb::Append(out, Encode(data));
    return;
  }
  if (!plain_) {
    out.push_back(static_cast<uint8_t>(tvb::Encoding::kRaw));
  }
  tvb::Append(out, data);
}

void BlockEncoder::AppendFree(tvb::Buffer &out, uint32_t bits, tvb::Bytes data, tvb::Bytes care) {
  if (IsRaw() || tvb::RawIsSmallest(data.size())) {
    Append(out, data);
    return;
  }
  tvb::Buffer all_care(care.begin(), care.end());
  if (bits % 8 != 0) {
    all_care.back() |= static_cast<uint8_t>(0xFF >> bits % 8);
  }
  if (AllOnes(all_care)) {
    Append(out, data);
    return;
  }
  tvb::Buffer best;
  for (const tvb::Buffer &version : FreeBitVersions(data, all_care)) {
    const tvb::Buffer &block = Encode(version);
    if (best.empty() || block.size() < best.size()) {
      best = block;
    }
  }
  tvb::Append(out, best);
}

bool BlockEncoder::IsRaw() const {
  return plain_ || choice_.encoding == tvb::Encoding::kRaw;
}

const tvb::Buffer &BlockEncoder::Encode(tvb::Bytes data) {
  if (tvb::RawIsSmallest(data.size()) || data.size() > kLargestKnown) {
    last_ = tvb::EncodeBlock(data, choice_);
    return last_;
  }
  const uint64_t hash = Hash(data);
  Known &known = known_[hash % kEntries];
  if (known.block.empty() || known.hash != hash ||
      !std::equal(data.begin(), data.end(), known.data.begin(), known.data.end())) {
    known.block = tvb::EncodeBlock(data, choice_);
    known.data.assign(data.begin(), data.end());
    known.hash = hash;
  }
  return known.block;
}

}  // namespace tool
