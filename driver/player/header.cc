// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/header.h"

#include "player/reader.h"
#include "util/result.h"

extern "C" {

u8 g_compress;
u64 g_cfg_start_pos;

// Reads `count` bytes into g_buffer as a string.
static void read_text(u32 count) {
  m7_read_bytes(g_buffer, count);
  g_buffer[count] = 0;
}

s32 Quorlan_ReadTvbHeader(void) {
  g_pos = 0;
  if (fgetc() != 'a')
    return RESULT_BAD_HEADER;
  read_text(2);
  read_text(8);
  g_compress = static_cast<u8>(fgetc());
  if (fgetc() != 'b')
    return RESULT_BAD_HEADER;
  Quorlan_ReadNumber();
  if (fgetc() != 'V' || fgetc() != 1)
    return RESULT_BAD_HEADER;
  g_cfg_start_pos = g_pos;
  return 0;
}
}
