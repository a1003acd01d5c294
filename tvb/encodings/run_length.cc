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

// An escape byte and the payload that it makes, in bytes.
struct Escape {
  uint8_t byte = 0;
  size_t size = 0;
};

// The escape byte that makes the payload smallest; the lowest of equals.
Escape BestEscape(Bytes data) {
  std::array<int64_t, 256> saved{};
  for (size_t at = 0; at < data.size();) {
    size_t run = RunAt(data, at);
    size_t stored = 1 + NumberSize(static_cast<uint32_t>(run - 1));
    saved[data[at]] += static_cast<int64_t>(run) - static_cast<int64_t>(stored);
    at += run;
  }
  const auto best = std::max_element(saved.begin(), saved.end());
  return {static_cast<uint8_t>(best - saved.begin()), 1 + data.size() - static_cast<size_t>(*best)};
}

// No other run is stored in fewer bytes than it has.
bool AnyRunOfThree(Bytes data) {
  for (size_t at = 2; at < data.size(); ++at) {
    if (data[at] == data[at - 1] && data[at] == data[at - 2]) {
      return true;
    }
  }
  return false;
}

void EncodeWith(Buffer &out, Bytes data, uint8_t escape) {
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

void Encode(Buffer &out, Bytes data, std::optional<int64_t> parameter) {
  EncodeWith(out, data, parameter ? ByteParameter(*parameter) : BestEscape(data).byte);
}

bool EncodeBelow(Buffer &out, Bytes data, size_t limit) {
  if (1 + data.size() >= limit && !AnyRunOfThree(data)) {
    return false;
  }
  const Escape escape = BestEscape(data);
  if (escape.size >= limit) {
    return false;
  }
  EncodeWith(out, data, escape.byte);
  return true;
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
    .encode_below = EncodeBelow,
    .decode = Decode,
    .min_size = 2,
    .parameter_name = "escape",
    .parameter_text = EscapeText,
};

}  // namespace tvb
