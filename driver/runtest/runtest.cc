// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "runtest/runtest.h"

#include "jtag_gpio.h"

extern "C" {

u64 g_freq;

void Quorlan_Delay(u64 us) {
  for (u64 steps = us / 100 + 1; steps > 0; steps--)
    __const_udelay(M7_UDELAY_100_US);
}

// Waits for the rest of `required` microseconds when `elapsed` nanoseconds of them have passed.
static void wait_rest(u64 required, u64 elapsed) {
  if (elapsed < required * 1000)
    Quorlan_Delay(required - elapsed / 1000);
}

void Quorlan_KeepCycle(s32 cycles) {
  TDI_Wr(0);
  TMS_Wr(0);
  if (g_freq != 0 && static_cast<u32>(g_freq) == 0)
    return;

  const struct jtag_lines lines = m7_jtag_lines();
  const u64 begin = sched_clock();
  for (s32 i = 0; i < cycles; i++) {
    m7_drive(&lines, lines.tck, 0);
    m7_drive(&lines, lines.tck, 1);
  }
  const u64 end = sched_clock();
  if (end < begin)
    return;

  if (g_freq == 0)
    g_freq = 1000000;
  if (cycles >= 0)
    wait_rest(static_cast<u64>(cycles) * 1000000 / static_cast<u32>(g_freq) + 1, end - begin);
}
}
