// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reading the image of a command file: single bytes, runs of bytes, numbers, and the header, which
// is 'a', 2 bytes, 8 bytes, the compression byte, 'b', a number, 'V', 1. The first record follows
// it.
#pragma once

#include "kernel/kernel.h"

// g_read_limit while no download runs: reads are not bounded.
#define READ_LIMIT_NONE (~0ull)

extern "C" {

// The image and its length in bytes. Owned by the framework; the pointer is null after a download,
// but still set after a rejected one.
extern const u8 *g_tvb_buffer;
extern u64 g_tvb_length;

// Index in the image of the next byte to read.
extern u64 g_pos;

// After every single-byte read: that byte and a 0.
extern u8 g_buffer[1024];

// From this index on bytes read as 0 without being touched, and g_pos still advances. The image's
// length during a download, READ_LIMIT_NONE otherwise.
extern u64 g_read_limit;

// The header's compression byte; COMPRESS_NONE (decode/block.h) means raw data blocks throughout.
extern u8 g_compress;

// Index of the first record.
extern u64 g_cfg_start_pos;

// Returns the byte at g_pos (0 to 255), mirrors it into g_buffer and advances g_pos by one.
u32 fgetc(void);

// The same for a reader of many bytes, which holds in registers what it goes by. Opened at g_pos,
// with one byte read from it at least; only its closing moves g_pos, and mirrors the last byte.
struct image_reader {
  const u8 *image;
  u64 limit;
  u64 pos;
  u8 last;
};

static inline struct image_reader m7_open_image(void) {
  return {g_tvb_buffer, g_read_limit, g_pos, 0};
}

static inline u32 m7_next_byte(struct image_reader *reader) {
  reader->last = reader->pos < reader->limit ? reader->image[reader->pos] : 0;
  reader->pos++;
  return reader->last;
}

static inline void m7_close_image(const struct image_reader *reader) {
  g_pos = reader->pos;
  g_buffer[0] = reader->last;
  g_buffer[1] = 0;
}

// Copies `count` bytes of the image at g_pos to `to` and advances g_pos; bytes past the end are 0.
// g_buffer is unchanged.
void m7_read_bytes(u8 *to, u64 count);

// Reads one number at g_pos: groups of 7 bits, least significant first, one a byte, bit 7 set
// where another follows. Group i is shifted by 7 * i modulo 32 within 32 bits, sign-extended and
// added to the 64-bit result: a value with bit 31 set comes out sign-extended.
u64 Quorlan_ReadNumber(void);

// The same for a reader of many bytes.
static inline u64 m7_next_number(struct image_reader *reader) {
  u64 sum = 0;
  u32 byte;
  u32 shift = 0;
  do {
    byte = m7_next_byte(reader);
    sum += static_cast<u64>(static_cast<s32>((byte & 0x7F) << shift));
    shift = (shift + 7) % 32;
  } while (byte & 0x80);
  return sum;
}

// Checks the header from index 0 on. Returns 0 with g_cfg_start_pos and g_pos at the first
// record, or RESULT_BAD_HEADER; g_compress is set once the compression byte was reached.
s32 Quorlan_ReadTvbHeader(void);

// Returns whether more than `allowed` bytes were read past the end of the image.
bool m7_read_past_end(u64 allowed);

// Skips a record by its length: moves g_pos to `opcode` + `length` / 8, which truncates toward
// zero. `mark` and `opcode` are the indices of the record's mark and opcode, and the next mark is
// looked for `gap` bytes after g_pos. Returns false and moves nothing when that is before the
// image, or on a mark no later than this record's, which would bring the player back here for ever.
bool m7_skip_record(u64 mark, u64 opcode, s64 length, u64 gap);

// Reports to the kernel log that the file ends inside a record. Returns RESULT_MALFORMED.
s32 m7_refuse_cut_record(void);

// Copies `count` bytes of `src` from `*pos` on to `dst`, and a 0 after them; advances `*pos` by
// `count`. `dst` has room for count + 1 bytes.
void buffer_read(const u8 *src, u8 *dst, u64 count, u64 *pos);

// Reads a line of an open file, at most `size` bytes and from the file's own position, which is
// left after the line. The newline stays; a 0 follows unless the line fills the buffer. Returns
// `buffer`, or null when there is nothing to read, on a read error, and for a negative size.
u8 *read_line(u8 *buffer, s32 size, struct file *file);
}
