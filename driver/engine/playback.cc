// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/playback.h"

#include "engine/run_flag.h"
#include "engine/vector.h"
#include "jtag_gpio.h"
#include "kernel/log.h"
#include "util/bit_string.h"
#include "util/memory.h"

extern "C" {

static void stop_after_mismatch(void) {
  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "Verify Failed\r\n");
  m7_stop(RESULT_VERIFY_FAILED);
}

// A vector being played. Without a capture, what is read is compared.
struct play {
  struct jtag_lines lines;
  const u8 *vector;
  const u8 *mask;
  u32 start;
  u32 end;
  u8 *capture;
  u32 room;   // bytes of the capture
  u32 count;  // of these, those that are filled
};

static inline u32 level(u8 character, u32 bit) {
  return character >> bit & 1;
}

// The parts of a period are inlined by force: a call costs as much as they do.
#define INLINE [[gnu::always_inline]] static inline

// Returns false for a failed comparison.
INLINE bool read_tdo(struct play *play, u8 character) {
  const u8 value = static_cast<u8>(play->lines.read(play->lines.tdo));
  if (!play->capture)
    return value == level(character, VECTOR_EXPECTED);
  if (play->count < play->room)
    play->capture[play->count++] = static_cast<u8>('0' + value);
  return true;
}

INLINE bool play_period(struct play *play, u32 i, bool in_range, bool drives_tms) {
  const struct jtag_lines *lines = &play->lines;
  const u8 character = play->vector[i];
  m7_drive(lines, lines->tck, level(character, VECTOR_TCK_FIRST));
  if (in_range)
    m7_drive(lines, lines->tdi, level(character, VECTOR_TDI));
  if (drives_tms)
    m7_drive(lines, lines->tms, level(character, VECTOR_TMS));
  if (in_range && play->mask && m7_register_bit(play->mask, i - play->start) &&
      !read_tdo(play, character)) {
    stop_after_mismatch();
    return false;
  }
  m7_drive(lines, lines->tck, level(character, VECTOR_TCK_SECOND));
  return true;
}

// Plays from index `i` up to `to`. Returns where it has stopped.
INLINE u32 play_span(struct play *play, u32 i, u32 to, bool in_range, bool drives_tms) {
  for (; i < to && g_status == 1; i++) {
    if (!play_period(play, i, in_range, drives_tms))
      break;
  }
  return i;
}

// By itself, for a long scan needs all registers.
[[gnu::noinline]] static u32 play_middle(struct play *play, u32 i, u32 to) {
  struct play own = *play;  // where no call can change it
  i = play_span(&own, i, to, true, false);
  play->count = own.count;
  return i;
}

static u32 smaller(u32 a, u32 b) {
  return a < b ? a : b;
}

// Returns whether the whole vector was played.
static bool play_all(struct play *play, u32 length) {
  const u32 last = play->end - 1;
  u32 i = 0;
  if (play->start < play->end) {
    i = play_span(play, i, smaller(play->start, length), false, true);
    i = play_span(play, i, smaller(play->start + 1, length), true, true);
    i = play_middle(play, i, smaller(last, length));
    i = play_span(play, i, smaller(play->end, length), true, true);
  } else if (play->end == 0) {
    // The last index of the range is then the largest that there is.
    i = play_span(play, i, smaller(play->start, length - 1) + 1, false, true);
    i = play_span(play, i, smaller(last, length), false, false);
  }
  return play_span(play, i, length, false, true) == length;
}

static bool is_playable(u32 length) {
  return length > 0 && g_status == 1;
}

void m7_transfer(const u8 *mask, u32 start, u32 end, u32 length) {
  if (!is_playable(length))
    return;
  struct play play = {m7_jtag_lines(), g_vector, mask, start, end, nullptr, 0, 0};
  play_all(&play, length);
}

void Quorlan_Transfer(const u8 *mask, u32 start, u32 end) {
  m7_transfer(mask, start, end, m7_vector_length());
}

u8 *m7_transfer_and_read(const u8 *mask, u32 start, u32 end, u32 length) {
  // 0 for the range of all indices, which then has no room for any of them.
  const u32 room = end - start + 1;
  u8 *capture = m7_alloc_bytes(room);
  if (!capture)
    return nullptr;

  u8 *result = nullptr;
  if (is_playable(length)) {
    struct play play = {m7_jtag_lines(), g_vector, mask, start, end, capture, room, 0};
    if (play_all(&play, length) && play.count > 0)
      result = Quorlan_ReverseStr(capture, static_cast<s32>(play.count));
  }
  kfree(capture);
  return result;
}

u8 *Quorlan_TransferAndReadTDO(const u8 *mask, u32 start, u32 end) {
  return m7_transfer_and_read(mask, start, end, m7_vector_length());
}
}
