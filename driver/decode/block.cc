// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/block.h"

#include "decode/lzw_lib.h"
#include "player/reader.h"
#include "util/memory.h"

extern "C" {

#define MODE_RAW 0
#define MODE_RUN_LENGTH 1
#define MODE_NIBBLE 2
#define MODE_BIT_CODING 3
#define MODE_LZW 4

#define WRITE_LIMIT_NONE 0x7FFFFFFFFFFFFFFF

static u8 *alloc_decoded(s64 count) {
  return m7_alloc_bytes(static_cast<u64>(count) + 1);
}

s64 Quorlan_NumberDecode(void) {
  return static_cast<s64>(Quorlan_ReadNumber());
}

static u8 *copy_raw(u64 count) {
  u8 *block = m7_alloc_zeroed_bytes(count + 1);
  if (!block) {
    // What follows the block must still be found.
    g_pos += count;
    return nullptr;
  }
  m7_read_bytes(block, count);
  block[count] = 0;
  return block;
}

u8 *Quorlan_BytesDecode(s64 count) {
  u8 *block = alloc_decoded(count);
  if (!block)
    return nullptr;

  const u8 escape = static_cast<u8>(fgetc());
  s64 pending = 0;
  for (s64 i = 0; i < count; i++) {
    if (pending > 0) {
      block[i] = escape;
      pending--;
      continue;
    }
    block[i] = static_cast<u8>(fgetc());
    if (block[i] == escape)
      pending = Quorlan_NumberDecode();
  }
  return block;
}

// Returns the pattern of m nibbles at g_pos in a zeroed block one byte longer, or null.
static u8 *read_pattern(s64 m) {
  const s64 size = (m + 1) / 2;
  u8 *pattern = m7_alloc_zeroed_bytes(static_cast<u64>(size + 1));
  for (s64 i = 0; pattern && i < size; i++)
    pattern[i] = static_cast<u8>(fgetc());
  return pattern;
}

// Appends a pattern of m nibbles, m odd, to itself: bytes 0 to m - 1 then hold it twice.
static void double_pattern(u8 *pattern, s64 m) {
  const s64 size = (m + 1) / 2;
  pattern[size - 1] = static_cast<u8>((pattern[size - 1] & 0xF0) | pattern[0] >> 4);
  for (s64 k = size; k < m; k++)
    pattern[k] = static_cast<u8>(pattern[k - size] << 4 | pattern[k - size + 1] >> 4);
}

static void repeat(u8 *block, const u8 *pattern, s64 size, s64 times) {
  for (s64 r = 0; r < times; r++)
    memcpy(block + r * size, pattern, static_cast<size_t>(size));
}

u8 *Quorlan_NibbleDecode(s64 count) {
  u8 *block = alloc_decoded(count);
  if (!block)
    return nullptr;

  const s64 m = Quorlan_NumberDecode();
  u8 *pattern = read_pattern(m);
  if (!pattern) {
    printk("nibble decode: calloc fail");
    kfree(block);
    return nullptr;
  }

  const s64 repetitions = m > 0 ? 2 * count / m : 0;
  if (m % 2 == 0) {
    repeat(block, pattern, m / 2, repetitions);
  } else if (m != -1) {
    u8 *doubled = m7_realloc_bytes(pattern, static_cast<u64>(m + 1));
    if (!doubled) {
      // The pattern stays allocated. This is deliberate.
      printk("nibble decode: realloc fail");
      kfree(block);
      return nullptr;
    }
    pattern = doubled;
    double_pattern(pattern, m);
    repeat(block, pattern, m, static_cast<s32>(repetitions / 2));
  }
  kfree(pattern);
  return block;
}

struct bit_reader {
  u32 byte;
  u32 used;  // bits of it
};

static u32 read_bit(struct bit_reader *bits) {
  if (bits->used >= 8) {
    bits->byte = fgetc();
    bits->used = 0;
  }
  return bits->byte >> (7 - bits->used++) & 1;
}

static u8 read_literal(struct bit_reader *bits) {
  u32 literal = 0;
  for (u32 i = 0; i < 8; i++)
    literal = literal << 1 | read_bit(bits);
  return static_cast<u8>(literal);
}

u8 *Quorlan_HuffmanDecode(s64 count) {
  u8 *block = alloc_decoded(count);
  if (!block)
    return nullptr;

  const u8 symbol = static_cast<u8>(fgetc());
  struct bit_reader bits = {0, 8};
  for (s64 i = 0; i < count; i++)
    block[i] = read_bit(&bits) ? read_literal(&bits) : symbol;
  return block;
}

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
  g_pWriteBuffer = alloc_decoded(count);
  if (!g_pWriteBuffer)
    return nullptr;

  g_iWriteCount = 0;
  g_write_limit = count + 1;
  lzw_decompress(Quorlan_WriteBufferByte, Quorlan_ReadTvbByte);
  g_write_limit = WRITE_LIMIT_NONE;
  return g_pWriteBuffer;
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
