// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "util/text.h"

extern "C" {

static s32 length_of(const u8 *s) {
  return static_cast<s32>(strlen(reinterpret_cast<const char *>(s)));
}

static u8 folded(u8 c) {
  return static_cast<u8>(_ctype[c] & M7_CTYPE_UPPER ? c + 0x20 : c);
}

static bool same_character(u8 a, u8 b, s32 exact) {
  return exact ? a == b : folded(a) == folded(b);
}

// Returns the length of `pattern`, -1 when `s` cannot contain it.
static s32 pattern_length(const u8 *s, const u8 *pattern) {
  if (!s || !pattern || !*s || !*pattern)
    return -1;
  const s32 length = length_of(pattern);
  return length_of(s) < length ? -1 : length;
}

s32 Quorlan_EndsWith(const u8 *s, const u8 *suffix, s32 exact) {
  const s32 length = pattern_length(s, suffix);
  if (length < 0)
    return -1;

  const u8 *end = s + length_of(s) - length;
  for (s32 i = length - 1; i >= 0; i--)
    if (!same_character(end[i], suffix[i], exact))
      return 0;
  return 1;
}

s32 Quorlan_StartsWith(const u8 *s, const u8 *prefix, s32 exact) {
  const s32 length = pattern_length(s, prefix);
  if (length < 0)
    return -1;

  for (s32 i = 0; i < length; i++)
    if (!same_character(s[i], prefix[i], exact))
      return 0;
  return 1;
}

static bool contains(const u8 *set, u8 c) {
  for (; *set; set++)
    if (*set == c)
      return true;
  return false;
}

void Quorlan_RemoveChar(u8 *s, const u8 *set) {
  u8 *kept = s;
  for (; *s; s++)
    if (!contains(set, *s))
      *kept++ = *s;
  *kept = 0;
}
}
