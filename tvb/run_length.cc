// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/run_length.h"

#include <algorithm>
#include <array>

#include "tvb/number.h"

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

}  // namespace

uint8_t BestEscapeByte(Bytes data) {
  std::array<int64_t, 256> saved{};
  for (size_t at = 0; at < data.size();) {
    size_t run = RunAt(data, at);
    size_t stored = 1 + NumberSize(static_cast<uint32_t>(run - 1));
    saved[data[at]] += static_cast<int64_t>(run) - static_cast<int64_t>(stored);
    at += run;
  }
  return static_cast<uint8_t>(std::max_element(saved.begin(), saved.end()) - saved.begin());
}

void AppendRunLength(Buffer &out, Bytes data, uint8_t escape) {
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

}  // namespace tvb
