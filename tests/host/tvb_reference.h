// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A second reading of the file format, for the tests of its writer: small decoders made for being
// obviously right, not fast. They are strict: whatever a well-formed file would not hold throws
// std::runtime_error or std::out_of_range.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tvb_reference {

using Buffer = std::vector<uint8_t>;

inline void Require(bool holds, const char *what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

// Bytes that are taken one by one.
class Input {
 public:
  explicit Input(Buffer bytes) : bytes_(std::move(bytes)) {}

  uint8_t Byte() {
    return bytes_.at(at_++);
  }
  Buffer Run(size_t count) {
    Buffer run;
    while (run.size() < count) {
      run.push_back(Byte());
    }
    return run;
  }
  uint64_t Number() {
    uint64_t value = 0;
    for (int group = 0;; ++group) {
      Require(group < 5, "a number of more than five groups");
      uint8_t byte = Byte();
      value += static_cast<uint64_t>(byte & 0x7F) << (7 * group);
      if ((byte & 0x80) == 0) {
        Require(value <= 0xFFFFFFFF, "a number of more than 32 bits");
        return value;
      }
    }
  }
  size_t at() const {
    return at_;
  }
  bool AtEnd() const {
    return at_ == bytes_.size();
  }

 private:
  Buffer bytes_;
  size_t at_ = 0;
};

inline Buffer RunLength(Input &in, size_t count) {
  uint8_t escape = in.Byte();
  Buffer out;
  while (out.size() < count) {
    uint8_t byte = in.Byte();
    uint64_t copies = byte == escape ? in.Number() + 1 : 1;
    Require(copies <= count - out.size(), "a run past the end of the block");
    out.insert(out.end(), copies, byte);
  }
  return out;
}

inline Buffer Nibble(Input &in, size_t count) {
  uint64_t nibbles = in.Number();
  Buffer pattern = in.Run((nibbles + 1) / 2);
  Require(nibbles > 0 || count == 0, "no pattern");
  Require(nibbles == 0 || 2 * count % nibbles == 0, "a pattern that does not fill the block");
  auto nibble = [&](size_t i) {
    return pattern[i % nibbles / 2] >> (i % nibbles % 2 ? 0 : 4) & 15;
  };
  Buffer out;
  for (size_t i = 0; i < count; ++i) {
    out.push_back(static_cast<uint8_t>(nibble(2 * i) << 4 | nibble(2 * i + 1)));
  }
  return out;
}

inline Buffer BitCoding(Input &in, size_t count) {
  uint8_t symbol = in.Byte();
  uint8_t byte = 0;
  int left = 0;
  auto bit = [&] {
    if (left == 0) {
      byte = in.Byte();
      left = 8;
    }
    return byte >> --left & 1;
  };
  Buffer out;
  while (out.size() < count) {
    if (bit() == 0) {
      out.push_back(symbol);
      continue;
    }
    int literal = 0;
    for (int i = 0; i < 8; ++i) {
      literal = 2 * literal + bit();
    }
    out.push_back(static_cast<uint8_t>(literal));
  }
  Require((byte & ((1 << left) - 1)) == 0, "bits set after the last symbol");
  return out;
}

// An LZW stream taken apart.
struct LzwStream {
  Buffer data;
  std::vector<uint32_t> codes;  // as stored, clear codes and the end code included
  size_t wraps = 0;             // how often the counter went back to 257 by itself
};

// Reads codes of a stream: truncated binary, each byte's lowest bit first.
class LzwCodes {
 public:
  explicit LzwCodes(Input &in) : in_(in) {}

  uint32_t Code(uint32_t next) {
    int width = next < 512 ? 8 : next < 1024 ? 9 : next < 2048 ? 10 : 11;
    uint32_t threshold = (2u << width) - next - 1;
    uint32_t code = 0;
    for (int i = 0; i < width; ++i) {
      code |= Bit() << i;
    }
    if (code >= threshold) {
      code = 2 * code + Bit() - threshold;
    }
    Require(code <= next, "a code above the counter");
    return code;
  }
  void RequireZeroRest() {
    while (left_ > 0) {
      Require(Bit() == 0, "bits set after the end code");
    }
  }

 private:
  uint32_t Bit() {
    if (left_ == 0) {
      byte_ = in_.Byte();
      left_ = 8;
    }
    return byte_ >> (8 - left_--) & 1;
  }

  Input &in_;
  uint8_t byte_ = 0;
  int left_ = 0;
};

inline LzwStream Lzw(Input &in) {
  uint8_t k = in.Byte();
  Require(k <= 3, "a dictionary size of more than 3");
  const uint32_t size = 512u << k;
  LzwCodes codes(in);
  LzwStream stream;
  std::map<uint32_t, std::string> strings;
  std::string previous;  // empty: the dictionary has just been started afresh
  for (uint32_t next = 257;;) {
    uint32_t code = codes.Code(next);
    stream.codes.push_back(code);
    if (code == next) {
      codes.RequireZeroRest();
      return stream;
    }
    if (code == 256) {
      next = 257;
      previous.clear();
      continue;
    }
    std::string string;
    if (code < 256) {
      string.assign(1, static_cast<char>(code));
    } else {
      Require(!previous.empty(), "a string where only a byte can stand");
      string = code == next - 1 ? previous + previous[0] : strings.at(code);
    }
    stream.data.insert(stream.data.end(), string.begin(), string.end());
    if (!previous.empty()) {
      strings[next - 1] = previous + string[0];
    }
    previous = string;
    if (++next == size) {
      next = 257;
      previous.clear();
      strings.clear();
      ++stream.wraps;
    }
  }
}

// One data block with its mode byte.
inline Buffer Block(Input &in, size_t count) {
  switch (in.Byte()) {
    case 0:
      return in.Run(count);
    case 1:
      return RunLength(in, count);
    case 2:
      return Nibble(in, count);
    case 3:
      return BitCoding(in, count);
    case 4: {
      Buffer data = Lzw(in).data;
      Require(data.size() == count, "a stream of another length than the block");
      return data;
    }
    default:
      throw std::runtime_error("an unknown mode byte");
  }
}

// The clocks that a run-test's fields ask for at `hz`; `in` stands after the gate byte.
inline uint64_t RunTestClocks(Input &in, uint64_t hz) {
  uint64_t clocks = 0;
  for (;;) {
    uint8_t tag = in.Byte();
    if (tag == 23) {
      return clocks;
    }
    uint64_t n = in.Number();
    Require(n >= 10 && n <= 0x7FFFFFFF, "a number below its offset or of more than 31 bits");
    if (tag == 24) {
      clocks += n - 10 > 32768 ? hz * (n - 32778) / 1000 : hz * (n - 10) / 1000000;
    } else {
      Require(tag == 20, "an unknown tag");
      clocks += (n > 32768 ? n - 32768 : n) - 10;
    }
  }
}

}  // namespace tvb_reference
