// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Decodes a nibble repetition at g_pos to `count` bytes: a number m, then the ceil(m / 2) bytes of
// a pattern of m nibbles, high nibble first. Only whole repetitions are written, of the pattern
// for an even m and of the pattern twice for an odd one; the rest of the block stays unwritten.
// Result as for Quorlan_ProcessData; a failure of the pattern's memory is reported to the kernel
// log.
u8 *Quorlan_NibbleDecode(s64 count);
}
