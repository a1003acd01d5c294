// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/lzw_reader.h"

#include <algorithm>
#include <vector>

#include "tvb/lzw.h"

namespace tvb {
namespace {

constexpr uint32_t kClear = 256;
constexpr uint32_t kFirstString = 257;

// The strings that have a code: each is a shorter string, or a byte, and one byte more.
class Strings {
 public:
  explicit Strings(uint32_t codes) : entries_(codes) {
    for (uint32_t code = 0; code < kClear; ++code) {
      entries_[code] = {0, static_cast<uint8_t>(code), static_cast<uint8_t>(code), 1};
    }
  }

  void Define(uint32_t code, uint32_t prefix, uint8_t last) {
    const Entry &shorter = entries_[prefix];
    entries_[code] = {static_cast<uint16_t>(prefix), shorter.first, last,
                      static_cast<uint16_t>(shorter.length + 1)};
  }

  uint8_t First(uint32_t code) const {
    return entries_[code].first;
  }

  void Give(uint32_t code, Decoded &decoded) {
    size_t length = entries_[code].length;
    if (!decoded.keeps() || decoded.full()) {
      decoded.Skip(length);
      return;
    }
    spelled_.resize(length);
    for (size_t at = length; at-- > 0; code = entries_[code].prefix) {
      spelled_[at] = entries_[code].last;
    }
    decoded.Put(spelled_);
  }

 private:
  struct Entry {
    uint16_t prefix = 0;
    uint8_t first = 0;
    uint8_t last = 0;
    uint16_t length = 0;
  };

  std::vector<Entry> entries_;
  Buffer spelled_;
};

// Takes bits from the image, each byte from its lowest bit up.
class CodeBits {
 public:
  explicit CodeBits(Cursor &cursor) : cursor_(cursor) {}

  // A code of 0 to `next`, in truncated binary; what it is once the image has ended means nothing.
  uint32_t Code(uint32_t next) {
    int width = next < 512 ? 8 : next < 1024 ? 9 : next < 2048 ? 10 : 11;
    uint32_t threshold = (2u << width) - next - 1;
    uint32_t value = Take(width);
    return value < threshold ? value : 2 * value + Take(1) - threshold;
  }

 private:
  uint32_t Take(int count) {
    for (; held_count_ < count; held_count_ += 8) {
      held_ |= static_cast<uint32_t>(cursor_.Byte()) << held_count_;
    }
    uint32_t bits = held_ & ((1u << count) - 1);
    held_ >>= count;
    held_count_ -= count;
    return bits;
  }

  Cursor &cursor_;
  uint32_t held_ = 0;
  int held_count_ = 0;
};

void ReadCodes(Cursor &cursor, Decoded &decoded, uint32_t codes) {
  Strings strings(codes);
  CodeBits bits(cursor);
  uint32_t previous = kClear;
  uint32_t next = kFirstString;
  for (;;) {
    uint32_t code = bits.Code(next);
    if (cursor.past_end() || code == next) {
      return;
    }
    if (code == kClear) {
      next = kFirstString;
    } else {
      // The first code after a start, a clear or a wrap is a byte and defines no string.
      if (next > kFirstString) {
        uint8_t first = strings.First(code == next - 1 ? previous : code);
        strings.Define(next - 1, previous, first);
      }
      strings.Give(code, decoded);
      next = next + 1 == codes ? kFirstString : next + 1;
    }
    previous = code;
  }
}

}  // namespace

LzwResult ReadLzw(Cursor &cursor, Decoded &decoded) {
  LzwResult result;
  result.dictionary = cursor.Byte();
  if (cursor.past_end()) {
    result.outcome = LzwResult::kPastEnd;
  } else if (result.dictionary > kLargestLzwDictionary) {
    result.outcome = LzwResult::kDictionary;
  } else {
    ReadCodes(cursor, decoded, 512u << result.dictionary);
    result.outcome = cursor.past_end() ? LzwResult::kPastEnd : LzwResult::kEnded;
  }
  return result;
}

}  // namespace tvb
