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

static inline u8 level(u8 character, u32 bit) {
  return character >> bit & 1;
}

static inline bool in_range(u32 i, u32 start, u32 end) {
  return start <= i && i < end;
}

static inline bool reads_tdo(const u8 *mask, u32 i, u32 start, u32 end) {
  return mask && in_range(i, start, end) && m7_register_bit(mask, i - start);
}

// The first half of a period: TCK low, then what the target samples at the rising edge.
static inline void begin_period(u8 character, u32 i, u32 start, u32 end) {
  TCK_Wr(level(character, VECTOR_TCK_FIRST));
  if (in_range(i, start, end))
    TDI_Wr(level(character, VECTOR_TDI));
  if (i <= start || i >= end - 1)
    TMS_Wr(level(character, VECTOR_TMS));
}

static inline void end_period(u8 character) {
  TCK_Wr(level(character, VECTOR_TCK_SECOND));
}

void Quorlan_Transfer(const u8 *mask, u32 start, u32 end) {
  const u32 n = m7_vector_length();
  for (u32 i = 0; i < n && g_status == 1; i++) {
    const u8 character = g_vector[i];
    begin_period(character, i, start, end);
    if (reads_tdo(mask, i, start, end) && TDO_Rd() != level(character, VECTOR_EXPECTED)) {
      stop_after_mismatch();
      return;
    }
    end_period(character);
  }
}

// Plays the vector and stores what it reads in `capture`, of `room` bytes. Returns the number of
// characters stored; 0 when g_status was cleared.
static u32 capture_tdo(u8 *capture, u32 room, const u8 *mask, u32 start, u32 end) {
  const u32 n = m7_vector_length();
  u32 count = 0;
  for (u32 i = 0; i < n; i++) {
    if (g_status != 1)
      return 0;
    const u8 character = g_vector[i];
    begin_period(character, i, start, end);
    if (reads_tdo(mask, i, start, end)) {
      const u8 value = TDO_Rd();
      if (count < room)
        capture[count++] = static_cast<u8>('0' + value);
    }
    end_period(character);
  }
  return count;
}

u8 *Quorlan_TransferAndReadTDO(const u8 *mask, u32 start, u32 end) {
  // 0 for the range of all indices, which then has no room for any of them.
  const u32 room = end - start + 1;
  u8 *capture = m7_alloc_bytes(room);
  if (!capture)
    return nullptr;

  const u32 count = capture_tdo(capture, room, mask, start, end);
  u8 *result = count > 0 ? Quorlan_ReverseStr(capture, static_cast<s32>(count)) : nullptr;
  kfree(capture);
  return result;
}
}
