// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Decodes a one-symbol bit coding at g_pos to `count` bytes: a symbol byte S, then a stream of
// bits, each byte most significant first. A 0 stands for S, a 1 and eight bits, most significant
// first, for a literal byte; the low bits left in the last byte are dropped. Result as for
// Quorlan_ProcessData.
u8 *Quorlan_HuffmanDecode(s64 count);
}
