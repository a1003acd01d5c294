// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "util/bit_string.h"

#include "util/memory.h"

extern "C" {

// Room for `n` characters and the byte that ends them; a negative `n` has none.
static u8 *alloc_string(s64 n) {
  return n < 0 ? nullptr : m7_alloc_bytes(n + 1);
}

u8 *Quorlan_ReverseStr(const u8 *src, s32 n) {
  u8 *result = alloc_string(n);
  if (!result)
    return nullptr;

  for (s32 i = 0; i < n; i++)
    result[n - 1 - i] = src[i];
  result[n] = 0;
  return result;
}

s32 Quorlan_ReverseChar(u32 c) {
  u32 mirrored = 0;
  for (u32 bit = 0; bit < 8; bit++)
    mirrored |= (c >> bit & 1) << (7 - bit);
  return static_cast<s32>(mirrored);
}

u8 *Quorlan_ReverseCharStr(const u8 *src, s32 n) {
  u8 *result = alloc_string(n);
  if (!result)
    return nullptr;

  for (s32 i = 0; i < n; i++)
    result[i] = static_cast<u8>(Quorlan_ReverseChar(src[n - 1 - i]));
  result[n] = 0;
  return result;
}

// Returns the byte that `count` characters make, the first one most significant. Those from
// `readable` on are '0'.
static u8 pack_byte(const u8 *bits, s32 count, s32 readable) {
  u32 byte = 0;
  for (s32 i = 0; i < count; i++)
    byte = (byte << 1) + (i < readable ? bits[i] - '0' : 0);
  return static_cast<u8>(byte);
}

static void pack_bytes(const u8 *bits, s32 count, s32 readable, u8 *bytes) {
  const s32 rest = count % 8;
  const s32 size = count / 8 + (rest != 0);
  for (s32 b = 0; b < size; b++)
    bytes[b] = pack_byte(bits + 8 * b, b == 0 && rest != 0 ? rest : 8, readable - 8 * b);
  bytes[size] = 0;
}

u8 *Quorlan_BinToBytes(const u8 *bits, s32 count, s32 reverse) {
  const s64 size = (static_cast<s64>(count) + 7) / 8;
  u8 *result = alloc_string(count < 0 ? -1 : size);
  if (!result)
    return nullptr;
  if (reverse != 1) {
    pack_bytes(bits, count, static_cast<s32>(8 * size), result);
    return result;
  }

  u8 *copy = alloc_string(count);
  if (!copy) {
    kfree(result);
    return nullptr;
  }
  for (s32 i = 0; i < count; i++)
    copy[count - 1 - i] = bits[i];
  pack_bytes(copy, count, count, result);
  kfree(copy);
  return result;
}

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
