// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/lzw_block.h"

#include "decode/block.h"
#include "decode/lzw_lib.h"
#include "player/reader.h"

extern "C" {

#define WRITE_LIMIT_NONE 0x7FFFFFFFFFFFFFFF

u8 *g_pWriteBuffer;
s64 g_iWriteCount;

// The bytes that g_pWriteBuffer has room for.
static s64 g_write_limit = WRITE_LIMIT_NONE;

u32 Quorlan_ReadTvbByte(void) {
  const u32 byte = fgetc();
  return m7_read_past_end(0) ? ~0u : byte;
}

void Quorlan_WriteBufferByte(u32 byte) {
  if (g_iWriteCount < g_write_limit)
    g_pWriteBuffer[g_iWriteCount++] = static_cast<u8>(byte);
}

u8 *Quorlan_LzwDecode(s64 count) {
  g_pWriteBuffer = m7_alloc_decoded(count);
  if (!g_pWriteBuffer)
    return nullptr;

  g_iWriteCount = 0;
  g_write_limit = count + 1;
  lzw_decompress(Quorlan_WriteBufferByte, Quorlan_ReadTvbByte);
  g_write_limit = WRITE_LIMIT_NONE;
  return g_pWriteBuffer;
}
}
