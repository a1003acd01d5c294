// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Run-length encoding of one escape byte, the parameter. The payload is the escape byte, then every
// other byte unchanged and every run of r escape bytes as the escape byte and the number r - 1.
#include <algorithm>
#include <array>

#include "tvb/block.h"
#include "tvb/number.h"
#include "tvb/text.h"

namespace tvb {
namespace {

// The length of the run of equal bytes that starts at `start`.
size_t RunAt(Bytes data, size_t start) {
  size_t end = start + 1;
  while (end < data.size() && data[end] == data[start]) {
    ++end;
  }
  return end - start;
}

// The escape byte that makes the payload smallest; the lowest of equals.
uint8_t BestEscape(Bytes data) {
  std::array<int64_t, 256> saved{};
  for (size_t at = 0; at < data.size();) {
    size_t run = RunAt(data, at);
    size_t stored = 1 + NumberSize(static_cast<uint32_t>(run - 1));
    saved[data[at]] += static_cast<int64_t>(run) - static_cast<int64_t>(stored);
    at += run;
  }
  return static_cast<uint8_t>(std::max_element(saved.begin(), saved.end()) - saved.begin());
}

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  const uint8_t escape = parameter ? ByteParameter(*parameter) : BestEscape(data);
  out.push_back(escape);
  for (size_t at = 0; at < data.size();) {
    if (data[at] != escape) {
      out.push_back(data[at++]);
      continue;
    }
    size_t run = RunAt(data, at);
    out.push_back(escape);
    AppendNumber(out, static_cast<uint32_t>(run - 1));
    at += run;
  }
}

void Decode(Cursor &cursor, Decoded &decoded, BlockView &block) {
  uint8_t escape = cursor.Byte();
  block.parameter = escape;
  while (!decoded.full() && !cursor.past_end()) {
    uint8_t byte = cursor.Byte();
    if (cursor.past_end()) {
      return;
    }
    decoded.Put(byte);
    if (byte != escape) {
      continue;
    }
    NumberView more = cursor.Number();
    if (more.value > 0) {
      decoded.Put(escape, static_cast<uint64_t>(more.value));
    }
    if ((more.value < 0 || more.lossy) && !block.fault) {
      block.fault = {more.offset, "a run of " + NumberText(more) +
                                      " more bytes; a run's number is 0 to 2147483647"};
    }
  }
}

std::string EscapeText(uint64_t escape) {
  return "escape " + Hex(escape);
}

}  // namespace

const Codec codecs::kRunLength = {
    .encode = Encode,
    .decode = Decode,
    .min_size = 2,
    .parameter_name = "escape",
    .parameter_text = EscapeText,
};

}  // namespace tvb
