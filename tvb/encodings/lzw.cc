// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// LZW with an end code that moves. The payload is a byte k, the parameter, then codes: 0 to 255 are
// bytes, 256 restarts the dictionary, 257 and up are strings, and the value of the code counter
// itself ends the stream. The dictionary holds 512 << k codes.
//
// The counter starts at 257 and increases by one with every data code. When it would reach the size
// of the dictionary it wraps to 257, with no code in the stream, and the dictionary starts empty
// again. A code is one of the values 0 to the counter, in truncated binary: w bits if the value is
// below (2 << w) - counter - 1 and w + 1 bits otherwise, where w is 8, 9, 10 or 11 for a counter
// below 512, below 1024, below 2048, or above. Bits fill each byte from its lowest bit up; the
// unused bits of the last byte are 0.
#include <algorithm>
#include <bit>
#include <limits>
#include <vector>

#include "tvb/block.h"
#include "tvb/error.h"
#include "tvb/text.h"

namespace tvb {
namespace {

constexpr uint32_t kClear = 256;
constexpr uint32_t kFirstString = 257;
constexpr int kMaxK = 3;

// The code counter and the properties of the next code; encoder and decoder step it alike.
class CodeCounter {
 public:
  explicit CodeCounter(int k) : codes_(512u << k) {}

  int k() const {
    return std::countr_zero(codes_ / 512);
  }
  uint32_t codes() const {
    return codes_;
  }
  uint32_t next() const {
    return next_;
  }
  // True if no string has a code: at the start, and after a clear or a wrap.
  bool fresh() const {
    return next_ == kFirstString;
  }

  // The width of the next code in bits; one more if it is not below the threshold.
  int Width() const {
    return next_ < 512 ? 8 : next_ < 1024 ? 9 : next_ < 2048 ? 10 : 11;
  }
  uint32_t Threshold() const {
    return (2u << Width()) - next_ - 1;
  }

  // True once there was a wrap. Until then a larger dictionary gives the same codes.
  bool wrapped() const {
    return wrapped_;
  }

  // Advances after a data code.
  void Step() {
    if (++next_ == codes_) {
      next_ = kFirstString;
      wrapped_ = true;
    }
  }
  void Clear() {
    next_ = kFirstString;
  }

 private:
  uint32_t codes_;
  uint32_t next_ = kFirstString;
  bool wrapped_ = false;
};

// The pairs of neighbouring bytes since the last restart, as bits of a hash table. Two of them may
// share a bit: then the later one does not count as new.
class Pairs {
 public:
  // `bytes`: of the data.
  explicit Pairs(size_t bytes)
      : bits_(std::clamp(2 * static_cast<int>(std::bit_width(bytes)) + 1, kMinBits, kMaxBits)),
        seen_(size_t{1} << bits_ >> 6) {}

  void Restart() {
    std::fill(seen_.begin(), seen_.end(), 0);
  }

  // True if the pair is new.
  bool Add(uint8_t first, uint8_t second) {
    const auto pair = static_cast<uint32_t>(first << 8 | second);
    const uint32_t bit = (pair * 0x9E37 & 0xFFFF) >> (kMaxBits - bits_);
    const uint64_t before = seen_[bit >> 6];
    seen_[bit >> 6] = before | uint64_t{1} << (bit & 63);
    return (before >> (bit & 63) & 1) == 0;
  }

 private:
  static constexpr int kMinBits = 6;
  static constexpr int kMaxBits = 16;

  int bits_;  // the table's size is 1 << bits_
  std::vector<uint64_t> seen_;
};

// False if no payload of the data can be smaller than `limit` bytes. Every string with a code
// occurs earlier in the data, after the dictionary was last empty; so a pair that is new since then
// is in no string, and a code ends between its bytes.
bool MayBeBelow(Bytes data, size_t limit, CodeCounter &counter) {
  constexpr uint64_t kByteOfK = 8;
  constexpr uint64_t kLastByteOrString = 8;
  constexpr uint64_t kEnd = 9;
  uint64_t bits = kByteOfK + (data.empty() ? 0 : kLastByteOrString) + kEnd;
  Pairs pairs(data.size());
  for (size_t at = 1; at < data.size() && (bits + 7) / 8 < limit; ++at) {
    if (pairs.Add(data[at - 1], data[at])) {
      bits += static_cast<unsigned>(counter.Width());
      counter.Step();
      if (counter.fresh()) {
        pairs.Restart();
      }
    }
  }
  return (bits + 7) / 8 < limit;
}

// The encoder's dictionary: the strings that have a code, with the key (code of all but the last
// byte, last byte). An open-addressing hash table at most half full; a slot holds prefix, byte and
// code in 12, 8 and 12 bits, and 0 if free.
class Codes {
 public:
  // `strings`: the most that are added between two restarts.
  explicit Codes(size_t strings) : slots_(std::bit_ceil(2 * strings + 2), 0) {}

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

  // The slot that holds the string, or the free slot where it belongs.
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

class CodeWriter {
 public:
  CodeWriter(Buffer &out, CodeCounter &counter) : out_(out), counter_(counter) {}

  void PutData(uint32_t code) {
    Put(code);
    counter_.Step();
  }

  void PutEnd() {
    Put(counter_.next());
    if (held_count_ > 0) {
      PutBits(0, 8 - held_count_);
    }
  }

 private:
  void Put(uint32_t code) {
    int width = counter_.Width();
    uint32_t threshold = counter_.Threshold();
    if (code < threshold) {
      PutBits(code, width);
      return;
    }
    uint32_t value = code + threshold;
    PutBits(value >> 1 | (value & 1) << width, width + 1);
  }

  // Appends bits, lowest bit first, filling each byte from its lowest bit up.
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
  CodeCounter &counter_;
  uint32_t held_ = 0;
  int held_count_ = 0;
};

// Matches the data against the dictionary, always taking the longest string with a code. Gives up,
// with a part of the payload written, and returns false when that has `limit` bytes.
bool EncodeWith(Buffer &out, Bytes data, size_t limit, CodeCounter &counter) {
  const size_t start = out.size();
  out.push_back(static_cast<uint8_t>(counter.k()));
  CodeWriter writer(out, counter);
  if (!data.empty()) {
    Codes codes(std::min<size_t>(counter.codes() - kFirstString, data.size()));
    uint32_t string = data[0];
    for (uint8_t byte : data.subspan(1)) {
      if (uint32_t longer = codes.Find(string, byte)) {
        string = longer;
        continue;
      }
      writer.PutData(string);
      if (out.size() - start >= limit) {
        return false;
      }
      // The decoder defines this string, as the code below the counter, with the next code it
      // reads. It defines none for the first code after a wrap.
      if (counter.fresh()) {
        codes.Restart();
      } else {
        codes.Add(string, byte, counter.next() - 1);
      }
      string = byte;
    }
    writer.PutData(string);
  }
  writer.PutEnd();
  return out.size() - start < limit;
}

bool EncodeBelow(Buffer &out, Bytes data, size_t limit) {
  const size_t start = out.size();
  bool any = false;
  for (int k = 0; k <= kMaxK; ++k) {
    CodeCounter counter(k);
    if (MayBeBelow(data, limit, counter)) {
      const size_t before = out.size();
      counter = CodeCounter(k);
      if (EncodeWith(out, data, limit, counter)) {
        out.erase(out.begin() + start, out.begin() + before);
        limit = out.size() - start;
        any = true;
      } else {
        out.resize(before);
      }
    }
    if (!counter.wrapped()) {
      break;
    }
  }
  return any;
}

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  if (parameter && (*parameter < 0 || *parameter > kMaxK)) {
    throw Error("an LZW dictionary size is 0 to 3 (512 to 4096 codes), not " +
                std::to_string(*parameter));
  }
  constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();
  if (!parameter) {
    EncodeBelow(out, data, kNoLimit);
  } else {
    CodeCounter counter(static_cast<int>(*parameter));
    EncodeWith(out, data, kNoLimit, counter);
  }
}

// The decoder's dictionary: each string is a byte, or a shorter string plus one byte.
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

  // Takes constant time if nothing is kept.
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

// Reads codes from the image.
class CodeReader {
 public:
  explicit CodeReader(Cursor &cursor) : cursor_(cursor) {}

  // Past the end of the image the code has no meaning.
  uint32_t Next(const CodeCounter &counter) {
    uint32_t threshold = counter.Threshold();
    uint32_t value = Bits(counter.Width());
    return value < threshold ? value : 2 * value + Bits(1) - threshold;
  }

 private:
  uint32_t Bits(int count) {
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

void ReadCodes(Cursor &cursor, Decoded &decoded, int k) {
  CodeCounter counter(k);
  CodeReader reader(cursor);
  Strings strings(counter.codes());
  uint32_t previous = kClear;
  for (;;) {
    uint32_t code = reader.Next(counter);
    if (cursor.past_end() || code == counter.next()) {
      return;
    }
    if (code == kClear) {
      counter.Clear();
    } else {
      // The first code after a start, a clear or a wrap is a byte and defines no string.
      if (!counter.fresh()) {
        uint32_t defined = counter.next() - 1;
        strings.Define(defined, previous, strings.First(code == defined ? previous : code));
      }
      strings.Give(code, decoded);
      counter.Step();
    }
    previous = code;
  }
}

// Reads to the end code, no matter how many bytes the stream gives.
void Decode(Cursor &cursor, Decoded &decoded, BlockView &block) {
  uint64_t offset = cursor.position();
  uint8_t k = cursor.Byte();
  block.parameter = k;
  if (k > kMaxK) {
    block.fault = {offset, "LZW dictionary size " + Hex(k) + "; expected 0 to 3"};
  } else if (!cursor.past_end()) {
    ReadCodes(cursor, decoded, k);
  }
}

std::string SizeText(uint64_t k) {
  return "k " + std::to_string(k);
}

}  // namespace

const Codec codecs::kLzw = {
    .encode = Encode,
    .encode_below = EncodeBelow,
    .decode = Decode,
    .min_size = 4,
    .parameter_name = "k",
    .parameter_text = SizeText,
};

}  // namespace tvb
