// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/lzw_lib.h"

#include "util/memory.h"

extern "C" {

#define CODE_CLEAR 256
#define CODE_FIRST 257  // the first string
#define NO_BYTE (~0u)
#define NO_PREFIX (-1)
#define PARAMETER_BITS 0x03u
#define PARAMETER_INVALID 0xFCu

// Entry i describes code 256 + i.
struct lzw {
  void (*write_byte)(u32);
  u32 (*read_byte)(void);

  s32 codes;    // size of the dictionary, the bytes included
  s32 entries;  // size of each table
  u8 *stack;    // a string while its chain is walked, last byte first
  s16 *prefix;  // code of the string without its last byte
  u8 *suffix;   // last byte

  u64 bits;  // read and not used, next one lowest
  s32 bit_count;
  s32 next;
  s32 previous;  // the code before; CODE_CLEAR: none
};

static void free_tables(struct lzw *lzw) {
  m7_free(lzw->stack);
  m7_free(lzw->prefix);
  m7_free(lzw->suffix);
}

static bool alloc_tables(struct lzw *lzw) {
  const u64 entries = static_cast<u64>(lzw->entries);
  lzw->stack = m7_alloc_bytes(entries);
  if (lzw->stack)
    lzw->prefix = reinterpret_cast<s16 *>(m7_alloc_bytes(2 * entries));
  if (lzw->prefix)
    lzw->suffix = m7_alloc_bytes(entries);
  if (lzw->suffix)
    return true;
  free_tables(lzw);
  return false;
}

static bool read_more(struct lzw *lzw) {
  const u32 byte = lzw->read_byte();
  if (byte == NO_BYTE)
    return false;
  lzw->bits |= static_cast<u64>(byte) << lzw->bit_count;
  lzw->bit_count += 8;
  return true;
}

static s32 take_bits(struct lzw *lzw, s32 width) {
  const s32 value = static_cast<s32>(lzw->bits & ((1u << width) - 1));
  lzw->bits >>= width;
  lzw->bit_count -= width;
  return value;
}

static s32 code_width(s32 next) {
  if (next < 512)
    return 8;
  if (next < 1024)
    return 9;
  return next < 2048 ? 10 : 11;
}

// Reads a code in truncated binary: 0 to next, the lower ones one bit shorter. Returns -1 when the
// input ends.
static s32 read_code(struct lzw *lzw) {
  const s32 width = code_width(lzw->next);
  const s32 threshold = (2 << width) - lzw->next - 1;
  while (lzw->bit_count < width)
    if (!read_more(lzw))
      return -1;

  const s32 x = take_bits(lzw, width);
  if (x < threshold)
    return x;
  if (lzw->bit_count == 0 && !read_more(lzw))
    return -1;
  return 2 * x - threshold + take_bits(lzw, 1);
}

// Writes the string of `code`. Returns its first byte.
static u8 write_string(struct lzw *lzw, s32 code) {
  s32 depth = 0;
  while (code >= CODE_CLEAR && depth < lzw->entries - 1) {
    lzw->stack[depth++] = lzw->suffix[code - CODE_CLEAR];
    code = lzw->prefix[code - CODE_CLEAR];
  }
  if (code != NO_PREFIX)
    lzw->stack[depth++] = static_cast<u8>(code);

  const u8 first = lzw->stack[depth - 1];
  while (depth > 0)
    lzw->write_byte(lzw->stack[--depth]);
  return first;
}

static void write_and_define(struct lzw *lzw, s32 code, s32 previous) {
  const bool defines_itself = code == lzw->next - 1;
  const u8 first = write_string(lzw, defines_itself ? previous : code);
  if (defines_itself)
    lzw->write_byte(first);

  const s32 entry = lzw->next - CODE_FIRST;
  lzw->suffix[entry] = first;
  lzw->prefix[entry] = static_cast<s16>(previous);
  lzw->next = lzw->next + 1 == lzw->codes ? CODE_FIRST : lzw->next + 1;
}

static s32 decode(struct lzw *lzw) {
  for (;;) {
    const s32 code = read_code(lzw);
    const s32 previous = lzw->previous;
    lzw->previous = code;
    if (code < 0)
      return 1;
    if (code == lzw->next)
      return 0;
    if (code == CODE_CLEAR) {
      lzw->next = CODE_FIRST;
    } else if (previous == CODE_CLEAR) {
      lzw->write_byte(static_cast<u32>(code));
      lzw->next++;
    } else {
      write_and_define(lzw, code, previous);
    }
  }
}

s32 lzw_decompress(void (*write_byte)(u32), u32 (*read_byte)(void)) {
  const u32 parameter = read_byte();
  if (parameter == NO_BYTE || parameter & PARAMETER_INVALID)
    return 1;

  struct lzw lzw = {};
  lzw.write_byte = write_byte;
  lzw.read_byte = read_byte;
  lzw.codes = 512 << (parameter & PARAMETER_BITS);
  lzw.entries = lzw.codes - 256;
  lzw.next = CODE_FIRST;
  lzw.previous = CODE_CLEAR;
  if (!alloc_tables(&lzw))
    return 1;

  const s32 rc = decode(&lzw);
  free_tables(&lzw);
  return rc;
}
}
