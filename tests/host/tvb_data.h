// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Register data of many kinds for the tests of the block encodings; the same at every run.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace tvb_data {

using Buffer = std::vector<uint8_t>;

struct Sample {
  std::string name;
  Buffer bytes;
};

inline Buffer Random(size_t size, uint32_t seed) {
  std::mt19937 random(seed);
  Buffer bytes(size);
  for (uint8_t &byte : bytes) {
    byte = static_cast<uint8_t>(random());
  }
  return bytes;
}

// Copies of one random pattern of `nibbles` nibbles, the last one cut where `size` bytes end.
inline Buffer Periodic(size_t size, size_t nibbles, uint32_t seed) {
  Buffer pattern = Random(nibbles, seed);
  Buffer bytes(size);
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<uint8_t>(pattern[2 * i % nibbles] << 4 |
                                    (pattern[(2 * i + 1) % nibbles] & 0x0F));
  }
  return bytes;
}

// Words of a small vocabulary.
inline Buffer TextLike(size_t size, uint32_t seed) {
  const std::string words[] = {"erase ",  "row ", "program ", "the ",
                               "verify ", "of ",  "a\n",      "I/O "};
  std::mt19937 random(seed);
  Buffer bytes;
  while (bytes.size() < size) {
    const std::string &word = words[random() % std::size(words)];
    bytes.insert(bytes.end(), word.begin(), word.end());
  }
  bytes.resize(size);
  return bytes;
}

// `fill` everywhere but for a random byte in about one place of `gap`.
inline Buffer Sparse(size_t size, uint8_t fill, uint32_t gap, uint32_t seed) {
  std::mt19937 random(seed);
  Buffer bytes(size, fill);
  for (uint8_t &byte : bytes) {
    if (random() % gap == 0) {
      byte = static_cast<uint8_t>(random());
    }
  }
  return bytes;
}

// Runs of one byte, up to `longest` long, of few values.
inline Buffer Runs(size_t size, uint32_t longest, uint32_t seed) {
  std::mt19937 random(seed);
  Buffer bytes;
  while (bytes.size() < size) {
    bytes.insert(bytes.end(), 1 + random() % longest, static_cast<uint8_t>(random() % 4 * 85));
  }
  bytes.resize(size);
  return bytes;
}

// Bytes in which no two neighbours occur twice, up to 65536 of them: LZW finds no string in them,
// so each byte is a code.
inline Buffer WithoutPairs(size_t size) {
  Buffer bytes;
  for (int a = 0; a < 256; ++a) {
    bytes.push_back(static_cast<uint8_t>(a));
    for (int b = a + 1; b < 256; ++b) {
      bytes.push_back(static_cast<uint8_t>(a));
      bytes.push_back(static_cast<uint8_t>(b));
    }
  }
  bytes.resize(size);
  return bytes;
}

inline std::vector<Sample> Samples(size_t size) {
  uint32_t seed = static_cast<uint32_t>(size) * 31 + 7;
  std::vector<Sample> samples = {
      {"zeros", Buffer(size, 0x00)},
      {"ones", Buffer(size, 0xFF)},
      {"random", Random(size, seed)},
      {"text", TextLike(size, seed)},
      {"sparse in zeros", Sparse(size, 0x00, 40, seed)},
      {"dense in ones", Sparse(size, 0xFF, 3, seed)},
      {"short runs", Runs(size, 5, seed)},
      {"long runs", Runs(size, 700, seed)},
      {"without pairs", WithoutPairs(size)},
  };
  for (size_t nibbles : {1, 2, 3, 4, 5, 7, 8, 9, 15, 64}) {
    samples.push_back({"period " + std::to_string(nibbles), Periodic(size, nibbles, seed)});
  }
  return samples;
}

}  // namespace tvb_data
