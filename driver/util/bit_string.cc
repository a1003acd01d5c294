// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "util/bit_string.h"

#include "util/memory.h"

extern "C" {

// Room for `n` characters and the byte that ends them; a negative `n` has none.
static u8 *alloc_string(s64 n) {
  return n < 0 ? nullptr : alloc_bytes(n + 1);
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

// Returns the byte that `count` characters make, the first one most significant.
static u8 pack_byte(const u8 *bits, s32 count) {
  u32 byte = 0;
  for (s32 i = 0; i < count; i++)
    byte = (byte << 1) + (bits[i] - '0');
  return static_cast<u8>(byte);
}

static void pack_bytes(const u8 *bits, s32 count, u8 *bytes) {
  const s32 rest = count % 8;
  const s32 size = count / 8 + (rest != 0);
  for (s32 b = 0; b < size; b++)
    bytes[b] = pack_byte(bits + 8 * b, b == 0 && rest != 0 ? rest : 8);
  bytes[size] = 0;
}

// The characters in reverse order, padded with '0' to the whole bytes that packing reads.
static u8 *reversed_copy(const u8 *bits, s32 count) {
  const s32 padded = (count + 7) / 8 * 8;
  u8 *copy = alloc_bytes(static_cast<u64>(padded) + 1);
  if (!copy)
    return nullptr;

  for (s32 i = 0; i < count; i++)
    copy[count - 1 - i] = bits[i];
  for (s32 i = count; i < padded; i++)
    copy[i] = '0';
  return copy;
}

u8 *Quorlan_BinToBytes(const u8 *bits, s32 count, s32 reverse) {
  u8 *result = alloc_string(count < 0 ? -1 : (static_cast<s64>(count) + 7) / 8);
  if (!result)
    return nullptr;

  u8 *copy = nullptr;
  if (reverse == 1) {
    copy = reversed_copy(bits, count);
    if (!copy) {
      kfree(result);
      return nullptr;
    }
  }
  pack_bytes(copy ? copy : bits, count, result);
  kfree(copy);
  return result;
}
}
