// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/reader.h"

#include "player/record.h"
#include "util/result.h"

extern "C" {

const u8 *g_tvb_buffer;
u64 g_tvb_length;
u64 g_pos;
u8 g_buffer[1024];
u64 g_read_limit = READ_LIMIT_NONE;
u8 g_compress;
u64 g_cfg_start_pos;

u32 fgetc(void) {
  struct image_reader reader = m7_open_image();
  const u32 byte = m7_next_byte(&reader);
  m7_close_image(&reader);
  return byte;
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
  struct image_reader reader = m7_open_image();
  const u64 number = m7_next_number(&reader);
  m7_close_image(&reader);
  return number;
}

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

bool m7_read_past_end(u64 allowed) {
  return g_pos > g_read_limit && g_pos - g_read_limit > allowed;
}

bool m7_skip_record(u64 mark, u64 opcode, s64 length, u64 gap) {
  const s64 end = static_cast<s64>(opcode) + length / 8;
  if (end < 0)
    return false;
  const u64 next = static_cast<u64>(end) + gap;
  if (next <= mark && g_tvb_buffer[next] == RECORD_MARK)
    return false;
  g_pos = static_cast<u64>(end);
  return true;
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
  if (size < 0)
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
