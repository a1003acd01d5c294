// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/block_encoder.h"

#include <algorithm>
#include <array>

#include "tvb/hash.h"

namespace tvb {
namespace {

constexpr size_t kEntries = 1 << 9;

// The bytes of data that are worth looking up.
constexpr size_t kMinKnown = 1 << 6;
constexpr size_t kMaxKnown = 1 << 14;

uint8_t Merge(uint8_t data, uint8_t care, uint8_t filler) {
  return static_cast<uint8_t>((data & care) | (filler & ~care));
}

Buffer FilledWith(Bytes data, Bytes care, uint8_t filler) {
  Buffer filled(data.size());
  for (size_t i = 0; i < data.size(); ++i) {
    filled[i] = Merge(data[i], care[i], filler);
  }
  return filled;
}

Buffer FilledFromBefore(Bytes data, Bytes care) {
  Buffer filled(data.size());
  uint8_t before = 0;
  for (size_t i = 0; i < data.size(); ++i) {
    before = Merge(data[i], care[i], before);
    filled[i] = before;
  }
  return filled;
}

// The most frequent byte among those without don't-care bits; the lowest of equals.
uint8_t MostFrequent(Bytes data, Bytes care) {
  std::array<size_t, 256> counts{};
  for (size_t i = 0; i < data.size(); ++i) {
    counts[data[i]] += care[i] == 0xFF;
  }
  return static_cast<uint8_t>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

bool AllOnes(Bytes bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0xFF; });
}

// Keeps the unused bits of the last byte as they are.
Buffer WithUnusedBits(Bytes care, uint32_t bits) {
  Buffer all(care.begin(), care.end());
  if (bits % 8 != 0) {
    all.back() |= static_cast<uint8_t>(0xFF >> bits % 8);
  }
  return all;
}

}  // namespace

std::vector<Buffer> FreeBitVersions(Bytes data, Bytes care) {
  std::vector<Buffer> versions;
  versions.emplace_back(data.begin(), data.end());
  versions.push_back(FilledWith(data, care, 0x00));
  versions.push_back(FilledWith(data, care, 0xFF));
  versions.push_back(FilledFromBefore(data, care));
  versions.push_back(FilledWith(data, care, MostFrequent(data, care)));
  return versions;
}

BlockEncoder::BlockEncoder(const BlockChoice &choice) : choice_(choice) {
  EncodeBlock({}, choice);  // makes a bad choice fail here, not at the first shift
}

void BlockEncoder::operator()(Buffer &out, uint32_t bits, Bytes data, Bytes care) {
  if (IsAlwaysRaw(data)) {
    out.push_back(static_cast<uint8_t>(Encoding::kRaw));
    Append(out, data);
    return;
  }
  if (!care.empty() && !RawIsSmallest(data.size())) {
    const Buffer all_care = WithUnusedBits(care, bits);
    if (!AllOnes(all_care)) {
      EncodeSmallest(out, data, all_care);
      return;
    }
  }
  Encode(out, data);
}

bool BlockEncoder::IsAlwaysRaw(Bytes data) const {
  return choice_.encoding == Encoding::kRaw || (!choice_.encoding && RawIsSmallest(data.size()));
}

void BlockEncoder::EncodeSmallest(Buffer &out, Bytes data, Bytes care) {
  const size_t start = out.size();
  size_t end = start;
  for (const Buffer &version : FreeBitVersions(data, care)) {
    Encode(out, version);
    if (end == start || out.size() - end < end - start) {
      out.erase(out.begin() + static_cast<ptrdiff_t>(start),
                out.begin() + static_cast<ptrdiff_t>(end));
      end = out.size();
    } else {
      out.resize(end);
    }
  }
}

// A raw block costs no more than to look it up.
void BlockEncoder::Encode(Buffer &out, Bytes data) {
  if (data.size() < kMinKnown || data.size() > kMaxKnown) {
    AppendBlock(out, data, choice_);
    return;
  }
  known_.resize(kEntries);
  const uint64_t hash = Hash(data);
  Known &known = known_[hash % kEntries];
  if (known.hash == hash && std::ranges::equal(data, known.data)) {
    Append(out, known.block);
    return;
  }
  const size_t start = out.size();
  AppendBlock(out, data, choice_);
  if (out[start] != static_cast<uint8_t>(Encoding::kRaw)) {
    known.block.assign(out.begin() + static_cast<ptrdiff_t>(start), out.end());
    known.data.assign(data.begin(), data.end());
    known.hash = hash;
  }
}

}  // namespace tvb
