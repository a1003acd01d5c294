// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <cstring>
#include <random>

#include "cases.h"
#include "driver/host.h"
#include "tvb/block.h"

namespace bench {

namespace {

constexpr size_t kPage = 4096;

constexpr size_t kSizes[] = {16, 256, 4096, 65536, 500000};

// Rows as a programming file has them: a quarter of the bytes is blank, and they repeat in part.
tvb::Buffer Rows(size_t size) {
  tvb::Buffer data(size, 0xFF);
  std::mt19937 random(1);
  for (size_t i = 0; i < size; ++i) {
    if (i / 32 % 4 != 3) {
      const bool again = i >= 256 && i / 64 % 3 == 0;
      data[i] = again ? data[i - 256] : static_cast<uint8_t>(random());
    }
  }
  return data;
}

tvb::Buffer Random(size_t size) {
  tvb::Buffer data(size);
  std::mt19937 random(1);
  for (uint8_t &byte : data) {
    byte = static_cast<uint8_t>(random());
  }
  return data;
}

// The bytes from `from` on to the next that is half a page apart from `other`.
size_t Apart(const u8 *from, const u8 *other) {
  const auto place = [](const u8 *byte) { return reinterpret_cast<uintptr_t>(byte); };
  return (place(other) + kPage / 2 - place(from)) % kPage;
}

struct Data {
  const char *name;
  tvb::Buffer (*make)(size_t size);
};

constexpr Data kData[] = {
    {"random", Random}, {"rows", Rows}, {"zeros", [](size_t size) { return tvb::Buffer(size); }}};

void MeasureBlock(Results &results, const Effort &effort, const tvb::EncodingRow &encoding,
                  const Data &kind, size_t size) {
  const tvb::Buffer data = kind.make(size);
  const tvb::Buffer block = tvb::EncodeBlock(data, tvb::BlockChoice::As(encoding.encoding));
  g_tvb_buffer = block.data();
  g_read_limit = block.size();
  // Volatile, so that no copy is left out; apart, since some processors copy slowly where the
  // places within a page are alike.
  tvb::Buffer copy(size + kPage);
  u8 *volatile to = copy.data() + Apart(copy.data(), data.data());
  const u8 *volatile from = data.data();
  const std::vector<Subject> subjects = {
      {encoding.name,
       [&] {
         g_pos = 0;
         kfree(Quorlan_ProcessData(static_cast<u32>(size)));
       }},
      {"memcpy", [&] { std::memcpy(to, from, size); }},
  };
  const Rounds rounds = Measure(subjects, effort);
  const double bytes = static_cast<double>(size);
  results.Add({"decode", encoding.name, size, kind.name, "ns/byte", Median(rounds[0]) / bytes * 1e9,
               Median(rounds[1]) / bytes * 1e9, MedianRatio(rounds[0], rounds[1])});
}

}  // namespace

void MeasureDecoders(Results &results, const Effort &effort) {
  g_compress = 0;
  for (const tvb::EncodingRow &encoding : tvb::Encodings()) {
    for (const Data &kind : kData) {
      for (const size_t size : kSizes) {
        if (size <= effort.size_max) {
          MeasureBlock(results, effort, encoding, kind, size);
        }
      }
    }
  }
  g_read_limit = READ_LIMIT_NONE;
}

}  // namespace bench
