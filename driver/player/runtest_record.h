// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The fields of a run-test record, which follow its gate byte: wait times and cycle counts, in any
// order. The first byte that belongs to no field ends the record.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Reads the fields at g_pos and returns the TCK periods that they ask for together, times being
// converted at g_freq; an unset g_freq becomes 1 MHz and stays so. A '^' that ends the record is
// left for the next one to read.
u64 Quorlan_ProcessRuntestCmd(void);
}
