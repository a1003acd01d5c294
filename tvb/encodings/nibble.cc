// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Nibble repetition: a block that consists of whole copies of one pattern of nibbles, the high
// nibble of each byte first. The payload is the pattern's length in nibbles, which is the
// parameter, stored as a number, then the pattern, two nibbles per byte; after a pattern of odd
// length the last low nibble is 0.
#include <algorithm>

#include "tvb/block.h"
#include "tvb/error.h"
#include "tvb/number.h"
#include "tvb/text.h"

namespace tvb {
namespace {

uint8_t NibbleAt(Bytes data, uint64_t index) {
  uint8_t byte = data[static_cast<size_t>(index / 2)];
  return index % 2 == 0 ? byte >> 4 : byte & 0x0F;
}

// True if the first `length` nibbles are whole copies of the first `pattern`, which divides it.
bool Repeats(Bytes data, uint64_t length, uint64_t pattern) {
  if (pattern % 2 == 0) {
    return std::equal(data.begin() + pattern / 2, data.begin() + length / 2, data.begin());
  }
  for (uint64_t i = pattern; i < length; ++i) {
    if (NibbleAt(data, i) != NibbleAt(data, i - pattern)) {
      return false;
    }
  }
  return true;
}

// The length of the shortest pattern in nibbles: at most that of the block itself, 0 for an empty
// block. If patterns of two lengths fill the block, so does one of their greatest common divisor;
// so the shortest is reached by dividing the length by its prime factors while that works.
uint64_t ShortestPattern(Bytes data) {
  uint64_t pattern = 2 * data.size();
  uint64_t rest = pattern;
  for (uint64_t factor = 2; rest > 1; ++factor) {
    if (factor * factor > rest) {
      factor = rest;
    }
    for (bool divides = true; rest % factor == 0; rest /= factor) {
      divides = divides && Repeats(data, pattern, pattern / factor);
      pattern /= divides ? factor : 1;
    }
  }
  return pattern;
}

// A pattern must fill the block to its last byte in whole copies. An empty block has only the empty
// pattern.
bool IsPattern(Bytes data, uint64_t nibbles) {
  uint64_t length = 2 * data.size();
  if (nibbles == 0 || length == 0) {
    return nibbles == length;
  }
  return length % nibbles == 0 && Repeats(data, length, nibbles);
}

uint64_t GivenPattern(Bytes data, int64_t nibbles) {
  if (nibbles < 0 || !IsPattern(data, static_cast<uint64_t>(nibbles))) {
    throw Error("the block is not a whole number of copies of its first " +
                std::to_string(nibbles) +
                " nibbles; leave the length out for the shortest pattern");
  }
  return static_cast<uint64_t>(nibbles);
}

void EncodeWith(Buffer &out, Bytes data, uint64_t nibbles) {
  AppendNumber(out, static_cast<uint32_t>(nibbles));
  Append(out, Bytes(data.data(), static_cast<size_t>(nibbles + 1) / 2));
  if (nibbles % 2 != 0) {
    out.back() &= 0xF0;
  }
}

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  EncodeWith(out, data, parameter ? GivenPattern(data, *parameter) : ShortestPattern(data));
}

bool EncodeBelow(Buffer &out, Bytes data, size_t limit) {
  const uint64_t nibbles = ShortestPattern(data);
  if (NumberSize(static_cast<uint32_t>(nibbles)) + (nibbles + 1) / 2 >= limit) {
    return false;
  }
  EncodeWith(out, data, nibbles);
  return true;
}

void RepeatPattern(Bytes pattern, uint64_t nibbles, uint64_t bytes, Decoded &decoded) {
  if (!decoded.keeps()) {
    decoded.Skip(bytes);
    return;
  }
  uint64_t high = 0;
  for (uint64_t at = 0; at < bytes; ++at) {
    uint64_t low = high + 1 == nibbles ? 0 : high + 1;
    decoded.Put(static_cast<uint8_t>(NibbleAt(pattern, high) << 4 | NibbleAt(pattern, low)));
    high = low + 1 == nibbles ? 0 : low + 1;
  }
}

void Decode(Cursor &cursor, Decoded &decoded, BlockView &block) {
  NumberView number = cursor.Number();
  block.parameter = static_cast<uint64_t>(number.value);
  if (number.value < 0 || number.lossy) {
    block.fault = {number.offset, "a pattern of " + NumberText(number) +
                                      " nibbles; a pattern's length is 1 to 2147483647"};
  }
  if (number.value < 1) {
    return;
  }
  uint64_t nibbles = block.parameter;
  Bytes pattern = cursor.Slice(nibbles / 2 + nibbles % 2);
  if (cursor.past_end()) {
    return;
  }
  // The player copies a pattern of odd length in pairs, so only whole bytes are filled.
  uint64_t copies = 2 * decoded.count() / nibbles;
  copies -= nibbles % 2 == 1 ? copies % 2 : 0;
  RepeatPattern(pattern, nibbles, copies * nibbles / 2, decoded);
}

std::string PatternText(uint64_t nibbles) {
  return "pattern of " + Count(nibbles, "nibble");
}

std::string ShortageText(const BlockView &block) {
  return "a pattern of " + Count(block.parameter, "nibble") + " does not fill " +
         Count(block.count, "byte") + " in whole copies: " + Count(block.written, "byte") +
         " written, the rest left open";
}

}  // namespace

const Codec codecs::kNibble = {
    .encode = Encode,
    .encode_below = EncodeBelow,
    .decode = Decode,
    .min_size = 2,
    .parameter_name = "nibbles",
    .parameter_text = PatternText,
    .shortage_text = ShortageText,
};

}  // namespace tvb
