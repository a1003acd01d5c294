// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The four JTAG lines. Each call is one look-up and one call of the framework: no delay, no
// memory of the last level, no check. The download's entry has checked the pointers.
#pragma once

#include "kernel/framework.h"

extern "C" {

// The GPIO numbers of the lines and the framework's operations on them. Set by TvbToVec for a
// download, owned by the framework, never cleared. Null at load.
extern const struct pin_config *g_tvb_cpld_cfg;
extern const struct pin_operations *g_tvb_jtag_funcs;

// Drive a line: low for a level of 0, high for any other.
void TMS_Wr(u8 level);
void TCK_Wr(u8 level);
void TDI_Wr(u8 level);

// Returns the low 8 bits of what the framework read on TDO: 0 for low, 1 for high.
u8 TDO_Rd(void);
}
