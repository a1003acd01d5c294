// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/block.h"

#include "decode/bit_coding.h"
#include "decode/lzw_block.h"
#include "decode/nibble.h"
#include "decode/run_length.h"
#include "player/header.h"
#include "player/reader.h"
#include "util/memory.h"

extern "C" {

#define MODE_RAW 0
#define MODE_RUN_LENGTH 1
#define MODE_NIBBLE 2
#define MODE_BIT_CODING 3
#define MODE_LZW 4

u8 *m7_alloc_decoded(s64 count) {
  return count < 0 ? nullptr : m7_alloc_bytes(static_cast<u64>(count) + 1);
}

s64 Quorlan_NumberDecode(void) {
  return static_cast<s64>(Quorlan_ReadNumber());
}

static u8 *copy_raw(u64 count) {
  u8 *block = m7_alloc_zeroed_bytes(count + 1);
  if (!block) {
    // The record stays in step: what follows the block is still found.
    g_pos += count;
    return nullptr;
  }
  m7_read_bytes(block, count);
  block[count] = 0;
  return block;
}

u8 *Quorlan_ProcessData(u32 byte_count) {
  if (g_compress == COMPRESS_NONE)
    return copy_raw(byte_count);

  switch (fgetc()) {
    case MODE_RAW:
      return copy_raw(byte_count);
    case MODE_RUN_LENGTH:
      return Quorlan_BytesDecode(byte_count);
    case MODE_NIBBLE:
      return Quorlan_NibbleDecode(byte_count);
    case MODE_BIT_CODING:
      return Quorlan_HuffmanDecode(byte_count);
    case MODE_LZW:
      return Quorlan_LzwDecode(byte_count);
    default:
      printk("Error: Unkown compress mode\n");
      return nullptr;
  }
}
}
