// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/lzw.h"

#include <algorithm>
#include <vector>

#include "tvb/error.h"

namespace tvb {
namespace {

constexpr uint32_t kClear = 256;
constexpr uint32_t kFirstString = 257;

// The strings that have a code, each by (code of all but its last byte, last byte). An open hash
// table at most half full: a slot holds prefix, byte and code in 12, 8 and 12 bits, 0 being free.
class Dictionary {
 public:
  explicit Dictionary(uint32_t codes) : slots_(2 * codes, 0) {}

  void Restart() {
    std::fill(slots_.begin(), slots_.end(), 0);
  }

  // The code of the string, or 0 if it has none.
  uint32_t Find(uint32_t prefix, uint8_t byte) const {
    return slots_[SlotOf(prefix, byte)] & 0xFFF;
  }

  void Add(uint32_t prefix, uint8_t byte, uint32_t code) {
    slots_[SlotOf(prefix, byte)] = Key(prefix, byte) << 12 | code;
  }

 private:
  static uint32_t Key(uint32_t prefix, uint8_t byte) {
    return prefix << 8 | byte;
  }

  // Where the string is, or the free slot where it would go.
  size_t SlotOf(uint32_t prefix, uint8_t byte) const {
    uint32_t key = Key(prefix, byte);
    size_t last = slots_.size() - 1;
    size_t slot = (key * 2654435761u >> 12) & last;
    while (slots_[slot] != 0 && slots_[slot] >> 12 != key) {
      slot = (slot + 1) & last;
    }
    return slot;
  }

  std::vector<uint32_t> slots_;
};

// Writes codes and steps the counter as the reader of the stream will.
class CodeStream {
 public:
  CodeStream(Buffer &out, uint32_t codes) : out_(out), codes_(codes) {}

  uint32_t next() const {
    return next_;
  }

  void PutData(uint32_t code) {
    Put(code);
    next_ = next_ + 1 == codes_ ? kFirstString : next_ + 1;
  }

  void PutClear() {
    Put(kClear);
    next_ = kFirstString;
  }

  void PutEnd() {
    Put(next_);
    if (held_count_ > 0) {
      PutBits(0, 8 - held_count_);
    }
  }

 private:
  int Width() const {
    return next_ < 512 ? 8 : next_ < 1024 ? 9 : next_ < 2048 ? 10 : 11;
  }

  void Put(uint32_t code) {
    int width = Width();
    uint32_t threshold = (2u << width) - next_ - 1;
    if (code < threshold) {
      PutBits(code, width);
      return;
    }
    uint32_t value = code + threshold;
    PutBits(value >> 1, width);
    PutBits(value & 1, 1);
  }

  // Lowest bit first, into each byte from its lowest bit up.
  void PutBits(uint32_t bits, int count) {
    held_ |= bits << held_count_;
    held_count_ += count;
    while (held_count_ >= 8) {
      out_.push_back(static_cast<uint8_t>(held_));
      held_ >>= 8;
      held_count_ -= 8;
    }
  }

  Buffer &out_;
  const uint32_t codes_;
  uint32_t next_ = kFirstString;
  uint32_t held_ = 0;
  int held_count_ = 0;
};

// Matches the data against the dictionary, always taking the longest string that has a code.
class Encoder {
 public:
  Encoder(Buffer &out, uint32_t codes, size_t clear_every)
      : dictionary_(codes), stream_(out, codes), clear_every_(clear_every) {}

  void Encode(Bytes data) {
    if (!data.empty()) {
      uint32_t string = data[0];
      for (const uint8_t *byte = data.begin() + 1; byte != data.end(); ++byte) {
        string = Extend(string, *byte);
      }
      stream_.PutData(string);
    }
    stream_.PutEnd();
  }

 private:
  // Takes one more byte: gives the code of the longer string, or writes `string` and starts anew.
  uint32_t Extend(uint32_t string, uint8_t byte) {
    if (uint32_t longer = dictionary_.Find(string, byte)) {
      return longer;
    }
    stream_.PutData(string);
    if (++since_clear_ == clear_every_) {
      stream_.PutClear();
      since_clear_ = 0;
    }
    // The reader defines this string, as the code below the counter, with the code it reads next.
    // It defines none for the first code after a wrap or a clear.
    if (stream_.next() == kFirstString) {
      dictionary_.Restart();
    } else {
      dictionary_.Add(string, byte, stream_.next() - 1);
    }
    return byte;
  }

  Dictionary dictionary_;
  CodeStream stream_;
  const size_t clear_every_;
  size_t since_clear_ = 0;
};

}  // namespace

void AppendLzw(Buffer &out, Bytes data, int k, size_t clear_every) {
  if (k < 0 || k > kLargestLzwDictionary) {
    throw Error("an LZW dictionary size is 0 to 3 (512 to 4096 codes), not " + std::to_string(k));
  }
  out.push_back(static_cast<uint8_t>(k));
  Encoder(out, 512u << k, clear_every).Encode(data);
}

}  // namespace tvb
