// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/run_flag.h"

extern "C" {

u32 g_status = 1;
s32 g_stop_code;

void m7_stop(s32 code) {
  g_status = 0;
  g_stop_code = code;
}
}
