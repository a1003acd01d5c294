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

static s64 bounded(s64 count, s64 limit) {
  return count < limit ? count : limit;
}

u8 *Quorlan_BytesDecode(s64 count) {
  u8 *block = alloc_decoded(count);
  if (!block)
    return nullptr;

  struct image_reader image = m7_open_image();
  const u32 escape = m7_next_byte(&image);
  for (s64 i = 0; i < count;) {
    const u32 byte = m7_next_byte(&image);
    block[i++] = static_cast<u8>(byte);
    if (byte != escape)
      continue;
    const s64 repeats = bounded(static_cast<s64>(m7_next_number(&image)), count - i);
    if (repeats > 0) {
      memset(block + i, static_cast<s32>(escape), static_cast<size_t>(repeats));
      i += repeats;
    }
  }
  m7_close_image(&image);
  return block;
}

// Returns the pattern of m nibbles at g_pos in a zeroed block one byte longer, or null.
static u8 *read_pattern(s64 m) {
  const s64 size = (m + 1) / 2;
  u8 *pattern = m7_alloc_zeroed_bytes(static_cast<u64>(size + 1));
  if (!pattern || size < 1)
    return pattern;
  struct image_reader image = m7_open_image();
  for (s64 i = 0; i < size; i++)
    pattern[i] = static_cast<u8>(m7_next_byte(&image));
  m7_close_image(&image);
  return pattern;
}

// Appends a pattern of m nibbles, m odd, to itself: bytes 0 to m - 1 then hold it twice.
static void double_pattern(u8 *pattern, s64 m) {
  const s64 size = (m + 1) / 2;
  pattern[size - 1] = static_cast<u8>((pattern[size - 1] & 0xF0) | pattern[0] >> 4);
  for (s64 k = size; k < m; k++)
    pattern[k] = static_cast<u8>(pattern[k - size] << 4 | pattern[k - size + 1] >> 4);
}

// Fills the block with a pattern of `size` bytes, whole and `times` times: what is there already is
// copied, so each copy is twice as long as the one before.
static void repeat(u8 *block, const u8 *pattern, s64 size, s64 times) {
  if (times < 1)
    return;
  memcpy(block, pattern, static_cast<size_t>(size));
  for (s64 filled = size; filled < size * times;) {
    const s64 more = bounded(filled, size * times - filled);
    memcpy(block + filled, block, static_cast<size_t>(more));
    filled += more;
  }
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

// Bits of the image, the next one highest. Below the `count` bits are zeros.
struct bit_reader {
  u64 bits;
  u32 count;
};

#define BIT_READER_FULL 56  // from here on no other byte fits, with a 0 below
#define LITERAL_BITS 9

static inline void read_bits(struct bit_reader *reader, struct image_reader *image) {
  reader->count += 8;
  reader->bits |= static_cast<u64>(m7_next_byte(image)) << (64 - reader->count);
}

static inline u32 leading_zeros(const struct bit_reader *reader) {
  const u32 zeros = static_cast<u32>(__builtin_clzll(reader->bits | 1));
  return zeros < reader->count ? zeros : reader->count;
}

// 1 to 63 bits, of those that were read.
static inline u64 next_bits(struct bit_reader *reader, u32 count) {
  const u64 taken = reader->bits >> (64 - count);
  reader->bits <<= count;
  reader->count -= count;
  return taken;
}

u8 *Quorlan_HuffmanDecode(s64 count) {
  u8 *block = alloc_decoded(count);
  if (!block)
    return nullptr;

  struct image_reader image = m7_open_image();
  struct bit_reader reader = {0, 0};
  const u32 symbol = m7_next_byte(&image);
  for (s64 i = 0; i < count;) {
    // Every byte that is left to decode takes a bit at least: nothing is read that is not used.
    while (reader.count < BIT_READER_FULL && reader.count < count - i)
      read_bits(&reader, &image);
    const u32 symbols = static_cast<u32>(bounded(leading_zeros(&reader), count - i));
    if (symbols > 0) {
      memset(block + i, static_cast<s32>(symbol), symbols);
      next_bits(&reader, symbols);
      i += symbols;
    }
    if (i == count || reader.count == 0)
      continue;
    while (reader.count < LITERAL_BITS)
      read_bits(&reader, &image);
    block[i++] = static_cast<u8>(next_bits(&reader, LITERAL_BITS));
  }
  m7_close_image(&image);
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

static void write_string(const u8 *bytes, s64 count) {
  const s64 written = bounded(count, g_write_limit - g_iWriteCount);
  if (written < 1)
    return;
  memcpy(g_pWriteBuffer + g_iWriteCount, bytes, static_cast<size_t>(written));
  g_iWriteCount += written;
}

void Quorlan_WriteBufferByte(u32 byte) {
  const u8 low = static_cast<u8>(byte);
  write_string(&low, 1);
}

u8 *Quorlan_LzwDecode(s64 count) {
  g_pWriteBuffer = alloc_decoded(count);
  if (!g_pWriteBuffer)
    return nullptr;

  g_iWriteCount = 0;
  g_write_limit = count + 1;
  m7_lzw_decompress(write_string, Quorlan_ReadTvbByte);
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
