// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/text_buffer.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tool {
namespace {

constexpr size_t kDigitsOfNumber = 20;

// The two digits of each byte, whose highest bit is shifted first.
constexpr auto kDigitPairs = [] {
  constexpr const char *kReversed = "084C2A6E195D3B7F";
  std::array<std::array<char, 2>, 256> pairs{};
  for (size_t byte = 0; byte < pairs.size(); ++byte) {
    pairs[byte] = {kReversed[byte % 16], kReversed[byte / 16]};
  }
  return pairs;
}();

}  // namespace

void TextBuffer::PutLeft(std::string_view text, size_t width) {
  const size_t blanks = width - std::min(width, text.size());
  PutText(text);
  std::memset(Room(blanks), ' ', blanks);
}

void TextBuffer::PutRight(std::string_view text, size_t width) {
  const size_t blanks = width - std::min(width, text.size());
  std::memset(Room(blanks), ' ', blanks);
  PutText(text);
}

void TextBuffer::PutRegister(std::span<const uint8_t> bytes, size_t size) {
  char *at = Room((size + 3) / 4);
  const size_t whole = size / 8;
  if (const size_t rest = size % 8; rest != 0) {
    const auto last = static_cast<uint8_t>(bytes[whole] & 0xFF << (8 - rest));
    const size_t digits = (rest + 3) / 4;
    at = std::copy_n(kDigitPairs[last].end() - digits, digits, at);
  }
  for (size_t i = whole; i > 0; --i) {
    at = std::copy_n(kDigitPairs[bytes[i - 1]].begin(), 2, at);
  }
}

void TextBuffer::EndLine() {
  size_ = text().find_last_not_of(' ') + 1;
  Put('\n');
}

void TextBuffer::PutNumber(uint64_t number) {
  char *first = Room(kDigitsOfNumber);
  const char *last = std::to_chars(first, first + kDigitsOfNumber, number).ptr;
  size_ -= static_cast<size_t>(first + kDigitsOfNumber - last);
}

void TextBuffer::PutSigned(int64_t number) {
  if (number < 0) {
    Put('-');
  }
  PutNumber(number < 0 ? -static_cast<uint64_t>(number) : static_cast<uint64_t>(number));
}

void TextBuffer::Grow(size_t count) {
  bytes_.resize(std::max(2 * bytes_.size(), size_ + count));
}

}  // namespace tool
