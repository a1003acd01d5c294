// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "util/hex_string.h"

#include "util/memory.h"

extern "C" {

// Returns the value of a hexadecimal digit, or -1.
static s32 digit_value(char ch) {
  if (ch >= '0' && ch <= '9')
    return ch - '0';
  if (ch >= 'A' && ch <= 'F')
    return ch - 'A' + 10;
  if (ch >= 'a' && ch <= 'f')
    return ch - 'a' + 10;
  return -1;
}

void Quorlan_HexToChar(char ch, u8 *out) {
  const s32 value = digit_value(ch);
  if (value < 0) {
    printk("Error: HexToChar Invalid Hex value %c", ch);
    return;
  }
  for (s32 i = 0; i < 4; i++)
    out[i] = static_cast<u8>('0' + (value >> (3 - i) & 1));
  out[4] = 0;
}

u8 *Quorlan_HexStrToChars(const u8 *hex, s32 count) {
  s64 digit = static_cast<s64>(strlen(reinterpret_cast<const char *>(hex)));
  if (count < 0 || count > 4 * digit)
    return nullptr;

  u8 *result = m7_alloc_bytes(static_cast<u64>(count) + 1);
  if (!result)
    return nullptr;

  u8 four[5] = {'0', '0', '0', '0', 0};
  result[count] = 0;
  for (s32 p = count; p > 0;) {
    Quorlan_HexToChar(static_cast<char>(hex[--digit]), four);
    for (s32 i = 3; i >= 0 && p > 0; i--)
      result[--p] = four[i];
  }
  return result;
}
}
