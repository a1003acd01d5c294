// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/number.h"

namespace tvb {

void AppendNumber(Buffer &out, uint32_t value) {
  while (value > 0x7F) {
    out.push_back(static_cast<uint8_t>(0x80 | (value & 0x7F)));
    value >>= 7;
  }
  out.push_back(static_cast<uint8_t>(value));
}

size_t NumberSize(uint32_t value) {
  size_t size = 1;
  while (value > 0x7F) {
    value >>= 7;
    ++size;
  }
  return size;
}

}  // namespace tvb
