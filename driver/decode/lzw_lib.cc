// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/lzw_lib.h"

#include "util/memory.h"

extern "C" {

#define CODE_CLEAR 256
#define CODE_FIRST 257  // the first string
#define NO_BYTE (~0u)
#define PARAMETER_BITS 0x03u
#define PARAMETER_INVALID 0xFCu

// Entry i describes code 256 + i.
struct lzw {
  void (*write_string)(const u8 *bytes, s64 count);
  void (*write_byte)(u32);  // where there is no write_string
  u32 (*read_byte)(void);

  s32 codes;    // size of the dictionary, the bytes included
  s32 entries;  // size of each table
  u8 *stack;    // a string, which is walked from its last byte on and ends where this ends
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

// Reads a code in truncated binary: 0 to next, the lower ones one bit shorter. Returns -1 when the
// input ends.
static s32 read_code(struct lzw *lzw) {
  const s32 width = 31 - __builtin_clz(static_cast<u32>(lzw->next));
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

static void write(const struct lzw *lzw, const u8 *bytes, s32 count) {
  if (lzw->write_string) {
    lzw->write_string(bytes, count);
    return;
  }
  for (s32 i = 0; i < count; i++)
    lzw->write_byte(bytes[i]);
}

// Puts the string of `code` before index `end` of the stack. Returns the index of its first byte.
static s32 stack_string(struct lzw *lzw, s32 code, s32 end) {
  s32 i = end - 1;
  for (; code >= CODE_CLEAR && i > 0; i--) {
    lzw->stack[i] = lzw->suffix[code - CODE_CLEAR];
    code = lzw->prefix[code - CODE_CLEAR];
  }
  lzw->stack[i] = static_cast<u8>(code);
  return i;
}

static void write_and_define(struct lzw *lzw, s32 code, s32 previous) {
  const s32 end = lzw->entries;
  const bool defines_itself = code == lzw->next - 1;
  const s32 start =
      defines_itself ? stack_string(lzw, previous, end - 1) : stack_string(lzw, code, end);
  const u8 first = lzw->stack[start];
  if (defines_itself)
    lzw->stack[end - 1] = first;
  write(lzw, lzw->stack + start, end - start);

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
      const u8 byte = static_cast<u8>(code);
      write(lzw, &byte, 1);
      lzw->next++;
    } else {
      write_and_define(lzw, code, previous);
    }
  }
}

// `lzw` has the functions that write and read.
static s32 decompress(struct lzw *lzw) {
  const u32 parameter = lzw->read_byte();
  if (parameter == NO_BYTE || parameter & PARAMETER_INVALID)
    return 1;

  lzw->codes = 512 << (parameter & PARAMETER_BITS);
  lzw->entries = lzw->codes - 256;
  lzw->next = CODE_FIRST;
  lzw->previous = CODE_CLEAR;
  if (!alloc_tables(lzw))
    return 1;

  const s32 rc = decode(lzw);
  free_tables(lzw);
  return rc;
}

s32 lzw_decompress(void (*write_byte)(u32), u32 (*read_byte)(void)) {
  struct lzw lzw = {};
  lzw.write_byte = write_byte;
  lzw.read_byte = read_byte;
  return decompress(&lzw);
}

s32 m7_lzw_decompress(void (*write_string)(const u8 *bytes, s64 count), u32 (*read_byte)(void)) {
  struct lzw lzw = {};
  lzw.write_string = write_string;
  lzw.read_byte = read_byte;
  return decompress(&lzw);
}
}
