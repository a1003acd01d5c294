// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Prefixes, suffixes and removal of characters, on NUL-terminated strings. Nothing is allocated
// and no state is kept.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Tell whether `s` ends with `suffix` or starts with `prefix`. With `exact` 0 upper-case letters
// (by the kernel's table, Latin-1 capitals included) count as their lower case.
// Returns 1 if so, 0 if not, -1 when a string is null or empty or the pattern is the longer one.
s32 Quorlan_EndsWith(const u8 *s, const u8 *suffix, s32 exact);
s32 Quorlan_StartsWith(const u8 *s, const u8 *prefix, s32 exact);

// Removes every character of `set` from `s`, in place; the others keep their order.
void Quorlan_RemoveChar(u8 *s, const u8 *set);
}
