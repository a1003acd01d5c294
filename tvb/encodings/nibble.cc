// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Nibble repetition: a block that consists of whole copies of one pattern of nibbles, the high
// nibble of each byte first. The payload is the pattern's length in nibbles, which is the
// parameter, stored as a number, then the pattern, two nibbles per byte; after a pattern of odd
// length the last low nibble is 0.
#include <vector>

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

// The smallest p > 0 such that each nibble equals the one p before it. Computed by the prefix
// function: removing the longest proper border of the whole sequence leaves its smallest period.
size_t SmallestPeriod(Bytes data) {
  size_t length = 2 * data.size();
  std::vector<uint32_t> border(length, 0);
  for (size_t i = 1; i < length; ++i) {
    uint8_t nibble = NibbleAt(data, i);
    uint32_t matched = border[i - 1];
    while (matched > 0 && NibbleAt(data, matched) != nibble) {
      matched = border[matched - 1];
    }
    border[i] = NibbleAt(data, matched) == nibble ? matched + 1 : 0;
  }
  return length - border[length - 1];
}

// The length of the shortest pattern in nibbles: at most that of the block itself, 0 for an empty
// block.
size_t ShortestPattern(Bytes data) {
  if (data.empty()) {
    return 0;
  }
  size_t length = 2 * data.size();
  size_t period = SmallestPeriod(data);
  // If the smallest period does not divide the length, no period below the length does.
  return length % period == 0 ? period : length;
}

// A pattern must fill the block to its last byte in whole copies. An empty block has only the empty
// pattern.
bool IsPattern(Bytes data, uint64_t nibbles) {
  uint64_t length = 2 * data.size();
  if (nibbles == 0 || length == 0) {
    return nibbles == length;
  }
  if (length % nibbles != 0) {
    return false;
  }
  for (uint64_t i = nibbles; i < length; ++i) {
    if (NibbleAt(data, i) != NibbleAt(data, i - nibbles)) {
      return false;
    }
  }
  return true;
}

size_t GivenPattern(Bytes data, int64_t nibbles) {
  if (nibbles < 0 || !IsPattern(data, static_cast<uint64_t>(nibbles))) {
    throw Error("the block is not a whole number of copies of its first " +
                std::to_string(nibbles) +
                " nibbles; leave the length out for the shortest pattern");
  }
  return static_cast<size_t>(nibbles);
}

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  const size_t nibbles = parameter ? GivenPattern(data, *parameter) : ShortestPattern(data);
  AppendNumber(out, static_cast<uint32_t>(nibbles));
  Append(out, Bytes(data.data(), (nibbles + 1) / 2));
  if (nibbles % 2 != 0) {
    out.back() &= 0xF0;
  }
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
    .decode = Decode,
    .min_size = 2,
    .parameter_name = "nibbles",
    .parameter_text = PatternText,
    .shortage_text = ShortageText,
};

}  // namespace tvb
