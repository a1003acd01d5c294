// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/reader.h"

#include "util/result.h"

extern "C" {

const u8 *g_tvb_buffer;
u64 g_tvb_length;
u64 g_pos;
u8 g_buffer[1024];
u64 g_read_limit = READ_LIMIT_NONE;

u32 fgetc(void) {
  g_buffer[0] = g_pos < g_read_limit ? g_tvb_buffer[g_pos] : 0;
  g_buffer[1] = 0;
  g_pos++;
  return g_buffer[0];
}

void m7_read_bytes(u8 *to, u64 count) {
  const u64 left = g_pos < g_read_limit ? g_read_limit - g_pos : 0;
  const u64 present = count < left ? count : left;
  if (present > 0)
    memcpy(to, g_tvb_buffer + g_pos, present);
  memset(to + present, 0, count - present);
  g_pos += count;
}

u64 Quorlan_ReadNumber(void) {
  u64 sum = 0;
  u32 byte;
  u32 shift = 0;
  do {
    byte = fgetc();
    sum += static_cast<u64>(static_cast<s32>((byte & 0x7F) << shift));
    shift = (shift + 7) % 32;
  } while (byte & 0x80);
  return sum;
}

bool m7_read_past_end(u64 allowed) {
  return g_pos > g_read_limit && g_pos - g_read_limit > allowed;
}

s32 m7_refuse_cut_record(void) {
  printk("Error: command file ends inside a record\n");
  return RESULT_MALFORMED;
}

void buffer_read(const u8 *src, u8 *dst, u64 count, u64 *pos) {
  memcpy(dst, src + *pos, count);
  dst[count] = 0;
  *pos += count;
}

// Returns the length of the first line in `count` bytes, its newline included.
static s32 line_length(const u8 *bytes, s32 count) {
  for (s32 i = 0; i < count; i++)
    if (bytes[i] == '\n')
      return i + 1;
  return count;
}

u8 *read_line(u8 *buffer, s32 size, struct file *file) {
  if (size < 1)
    return nullptr;
  s64 *position = m7_file_pos(file);
  const ssize_t count = kernel_read(file, buffer, static_cast<size_t>(size), position);
  if (count < 1)
    return nullptr;

  const s32 length = line_length(buffer, static_cast<s32>(count));
  *position -= count - length;
  if (length < size)
    buffer[length] = 0;
  return buffer;
}
}
