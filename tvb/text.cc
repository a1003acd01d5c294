// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/text.h"

namespace tvb {

std::string Hex(uint64_t value) {
  char text[2 + 16];
  char *const end = text + sizeof text;
  char *first = end;
  do {
    *--first = "0123456789ABCDEF"[value % 16];
    value /= 16;
  } while (value != 0 || end - first < 2);
  *--first = 'x';
  *--first = '0';
  return {first, end};
}

std::string NumberText(const NumberView &number) {
  return number.lossy ? "a number of more than 32 bits" : std::to_string(number.value);
}

std::string LengthText(const NumberView &length) {
  return length.lossy ? "a length that takes more than 32 bits"
                      : "a length of " + std::to_string(length.value) + " bits";
}

std::string Count(uint64_t count, const std::string &noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace tvb
