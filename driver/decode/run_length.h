// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Decodes a run-length payload at g_pos to `count` bytes: an escape byte E, then items. Any byte
// but E stands for itself; E and a number r stand for r + 1 times E, what goes past `count` being
// dropped. Result as for Quorlan_ProcessData.
u8 *Quorlan_BytesDecode(s64 count);
}
