// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "jtag_gpio.h"

extern "C" {

const struct pin_config *g_tvb_cpld_cfg;
const struct pin_operations *g_tvb_jtag_funcs;

static inline void drive(u32 gpio, u8 level) {
  if (level)
    g_tvb_jtag_funcs->drive_high(gpio);
  else
    g_tvb_jtag_funcs->drive_low(gpio);
}

void TMS_Wr(u8 level) {
  drive(g_tvb_cpld_cfg->tms, level);
}

void TCK_Wr(u8 level) {
  drive(g_tvb_cpld_cfg->tck, level);
}

void TDI_Wr(u8 level) {
  drive(g_tvb_cpld_cfg->tdi, level);
}

u8 TDO_Rd(void) {
  return static_cast<u8>(g_tvb_jtag_funcs->read(g_tvb_cpld_cfg->tdo));
}
}
