// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel's character classes, over Latin-1 as in the kernel.
#include <array>

namespace {

enum Class : unsigned char {
  kUpper = 0x01,
  kLower = 0x02,
  kDigit = 0x04,
  kControl = 0x08,
  kPunct = 0x10,
  kSpace = 0x20,
  kHex = 0x40,
  kHardSpace = 0x80,
};

constexpr bool Between(int c, int first, int last) {
  return first <= c && c <= last;
}

constexpr unsigned char AsciiClass(int c) {
  if (c == ' ') {
    return kSpace | kHardSpace;
  }
  if (c < 0x20 || c == 0x7F) {
    return Between(c, '\t', '\r') ? kControl | kSpace : kControl;
  }
  if (Between(c, '0', '9')) {
    return kDigit;
  }
  if (Between(c, 'A', 'Z')) {
    return c <= 'F' ? kUpper | kHex : kUpper;
  }
  if (Between(c, 'a', 'z')) {
    return c <= 'f' ? kLower | kHex : kLower;
  }
  return kPunct;
}

constexpr unsigned char Latin1Class(int c) {
  if (c < 0xA0) {
    return 0;
  }
  if (c == 0xA0) {
    return kSpace | kHardSpace;
  }
  // The multiplication and division signs lie among the letters.
  if (c < 0xC0 || c == 0xD7 || c == 0xF7) {
    return kPunct;
  }
  return c < 0xDF ? kUpper : kLower;
}

struct Table {
  unsigned char entries[256];
};

constexpr Table MakeTable() {
  Table table{};
  for (int c = 0; c < 256; ++c) {
    table.entries[c] = c < 0x80 ? AsciiClass(c) : Latin1Class(c);
  }
  return table;
}

}  // namespace

extern "C" {
// The driver sees the table as an array of bytes, the wrapper's only member.
extern const Table _ctype;
const Table _ctype = MakeTable();
}
