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

// The same for a loop of many such calls, which holds in registers what it goes by. The framework
// changes none of it during a download.
struct jtag_lines {
  int (*drive_high)(u32 gpio);
  int (*drive_low)(u32 gpio);
  int (*read)(u32 gpio);
  u32 tck;
  u32 tms;
  u32 tdi;
  u32 tdo;
};

static inline struct jtag_lines m7_jtag_lines(void) {
  return {g_tvb_jtag_funcs->drive_high, g_tvb_jtag_funcs->drive_low, g_tvb_jtag_funcs->read,
          g_tvb_cpld_cfg->tck,          g_tvb_cpld_cfg->tms,         g_tvb_cpld_cfg->tdi,
          g_tvb_cpld_cfg->tdo};
}

static inline void m7_drive(const struct jtag_lines *lines, u32 gpio, u32 level) {
  if (level)
    lines->drive_high(gpio);
  else
    lines->drive_low(gpio);
}
}
