// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/nibble.h"

#include <vector>

#include "tvb/error.h"
#include "tvb/number.h"

namespace tvb {
namespace {

uint8_t NibbleAt(Bytes data, size_t index) {
  uint8_t byte = data[index / 2];
  return index % 2 == 0 ? byte >> 4 : byte & 0x0F;
}

// The smallest p > 0 such that each nibble equals the one p before it. By the prefix function: the
// longest proper border of the whole sequence leaves its smallest period.
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

}  // namespace

bool IsNibblePattern(Bytes data, size_t nibbles) {
  size_t length = 2 * data.size();
  if (nibbles == 0 || length == 0) {
    return nibbles == length;
  }
  if (length % nibbles != 0) {
    return false;
  }
  for (size_t i = nibbles; i < length; ++i) {
    if (NibbleAt(data, i) != NibbleAt(data, i - nibbles)) {
      return false;
    }
  }
  return true;
}

size_t ShortestNibblePattern(Bytes data) {
  if (data.empty()) {
    return 0;
  }
  size_t length = 2 * data.size();
  size_t period = SmallestPeriod(data);
  // If the smallest period does not divide the length, no smaller one than the whole does.
  return length % period == 0 ? period : length;
}

void AppendNibble(Buffer &out, Bytes data, size_t nibbles) {
  if (!IsNibblePattern(data, nibbles)) {
    throw Error("the block is not a whole number of copies of its first " +
                std::to_string(nibbles) + " nibbles; use ShortestNibblePattern()");
  }
  AppendNumber(out, static_cast<uint32_t>(nibbles));
  Append(out, Bytes(data.data(), (nibbles + 1) / 2));
  if (nibbles % 2 != 0) {
    out.back() &= 0xF0;
  }
}

}  // namespace tvb
