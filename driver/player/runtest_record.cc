// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/record.h"

#include "player/reader.h"
#include "runtest/runtest.h"

extern "C" {

#define FIELD_EMPTY 19
#define FIELD_CYCLES 20
#define FIELD_TIME 24

#define NUMBER_OFFSET 10     // added to every stored number
#define NUMBER_MARKER 32768  // a time beyond it is in milliseconds; added to some cycle counts

#define FREQUENCY_DEFAULT 1000000

static u64 cycles_of_time(u64 number) {
  if (number - NUMBER_OFFSET > NUMBER_MARKER)
    return g_freq * (number - NUMBER_OFFSET - NUMBER_MARKER) / 1000;
  return g_freq * (number - NUMBER_OFFSET) / 1000000;
}

static u64 cycles_of_count(u64 number) {
  return (number > NUMBER_MARKER ? number - NUMBER_MARKER : number) - NUMBER_OFFSET;
}

u64 Quorlan_ProcessRuntestCmd(void) {
  if (g_freq == 0)
    g_freq = FREQUENCY_DEFAULT;

  u64 cycles = 0;
  for (;;) {
    const u32 field = fgetc();
    if (field == FIELD_TIME) {
      cycles += cycles_of_time(Quorlan_ReadNumber());
    } else if (field == FIELD_CYCLES) {
      cycles += cycles_of_count(Quorlan_ReadNumber());
    } else if (field != FIELD_EMPTY) {
      if (field == RECORD_MARK)
        g_pos--;
      return cycles;
    }
  }
}
}
