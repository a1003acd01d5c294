// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/vector.h"

#include "engine/playback.h"
#include "util/memory.h"

extern "C" {

#define VECTOR_SIZE_AT_LOAD 3200
#define VECTOR_SIZE_MAX 0xFFFFFFFFu

u8 *g_vector;
u32 g_vector_size = VECTOR_SIZE_AT_LOAD;
u32 g_vec_val;
u8 g_buf[2];

// What an append needs to know of the buffer, so as not to search it. One other than `vector` was
// put there by somebody else, and is measured.
static struct {
  const u8 *vector;
  u64 room;       // bytes of the buffer
  u64 length;     // index of the terminator
  bool given_up;  // no room could be had
} g_vector_tail;

static u64 length_of(const u8 *characters) {
  return strlen(reinterpret_cast<const char *>(characters));
}

u32 m7_vector_length(void) {
  return g_vector ? static_cast<u32>(length_of(g_vector)) : 0;
}

static void give_up(void) {
  g_vector_tail.given_up = true;
  m7_stop_without_memory();
  printk("Error: malloc/realloc failed, size %d\n", static_cast<s32>(g_vector_size));
}

// Takes over a new, empty buffer of `room` bytes; null gives the vector up.
static void start_buffer(u8 *buffer, u64 room) {
  g_vector = buffer;
  g_vector_tail = {buffer, room, 0, false};
  if (!buffer)
    give_up();
  else if (room > 0)
    buffer[0] = 0;
}

// Makes the tail true for a buffer or a content that did not come from here.
static void find_tail(void) {
  if (g_vector_tail.vector != g_vector)
    g_vector_tail = {g_vector, g_vector_size, length_of(g_vector), false};
  else if (g_vector[0] == 0)
    g_vector_tail.length = 0;
  else if (g_vector_tail.length == 0 || g_vector[g_vector_tail.length] != 0)
    g_vector_tail.length = length_of(g_vector);
}

void Quorlan_MemSet(u32 length) {
  // Somebody else's buffer was sized by what g_vector_size has been so far.
  const u64 room = g_vector_tail.vector == g_vector ? g_vector_tail.room : g_vector_size;
  if (g_vector_size < length)
    g_vector_size = length;
  if (g_vector) {
    start_buffer(g_vector, room);
  } else {
    const u64 wanted = static_cast<u64>(g_vector_size) + 1;
    start_buffer(m7_alloc_bytes(wanted), wanted);
  }
}

bool m7_begin_vector(u64 asked, u64 needed) {
  if (asked > VECTOR_SIZE_MAX) {
    give_up();
    return false;
  }
  Quorlan_MemSet(static_cast<u32>(asked));
  if (g_vector && needed >= M7_ALLOC_MAX)
    give_up();
  return !g_vector_tail.given_up;
}

void m7_forget_vector(void) {
  g_vector_tail = {};
}

// Returns the size to grow to for `needed` bytes: what g_vector_size asks for, unless that is too
// little, or more than the allocator has.
static u64 grown_size(u64 needed) {
  const u64 asked = static_cast<u64>(g_vector_size) + 1;
  if (asked >= needed && asked <= M7_ALLOC_MAX)
    return asked;
  const u64 doubled = 2 * g_vector_tail.room;
  if (needed <= doubled && doubled <= M7_ALLOC_MAX)
    return doubled;
  return needed <= M7_ALLOC_MAX ? M7_ALLOC_MAX : needed;
}

static bool make_room(u64 needed) {
  if (needed <= g_vector_tail.room)
    return true;

  const u64 size = grown_size(needed);
  u8 *grown = m7_realloc_bytes(g_vector, size);
  if (!grown) {
    give_up();
    return false;
  }
  g_vector = grown;
  g_vector_tail.vector = grown;
  g_vector_tail.room = size;
  return true;
}

static void append(const u8 *characters, u64 count) {
  if (!g_vector)
    return;
  find_tail();
  if (g_vector_tail.given_up || !make_room(g_vector_tail.length + count + 1))
    return;
  memcpy(g_vector + g_vector_tail.length, characters, count);
  g_vector_tail.length += count;
  g_vector[g_vector_tail.length] = 0;
}

void m7_append_characters(const u8 *characters) {
  append(characters, length_of(characters));
}

void m7_set_level(u32 field, u32 level) {
  g_vec_val = (g_vec_val & ~(1u << field)) | level << field;
}

void Quorlan_GenVec(void) {
  const u32 tdi = g_vec_val >> LEVEL_TDI & 1;
  const u32 tms = g_vec_val >> LEVEL_TMS & 1;
  const u32 expected = g_vec_val >> LEVEL_EXPECTED & 1;
  const u32 levels = tdi << 2 | tms << 1 | expected;
  g_buf[0] = static_cast<u8>(levels << 4 | 1u << VECTOR_TCK_SECOND | levels);
  append(g_buf, 1);
}

void m7_append_tms(u32 tms) {
  m7_set_level(LEVEL_TDI, 0);
  m7_set_level(LEVEL_EXPECTED, 0);
  m7_set_level(LEVEL_TMS, tms);
  Quorlan_GenVec();
}

void Quorlan_StateConfig(s32 state) {
  // Bit n is the TMS level of state n.
  const u32 tms_of_state = 0b0110'1100'1100'1010;
  m7_set_level(LEVEL_TDI, 0);
  m7_set_level(LEVEL_EXPECTED, 0);
  const bool known = state >= 1 && state <= 14;
  if (!known)
    printk("Error: StateConfig Invalid state");
  m7_set_level(LEVEL_TMS, known ? tms_of_state >> state & 1 : 0);
  Quorlan_GenVec();
}

s32 Quorlan_Reset(void) {
  kfree(g_vector);
  // A length that no buffer can have was asked for once; it must not end every later download.
  const u32 room = g_vector_size <= M7_ALLOC_MAX ? g_vector_size : VECTOR_SIZE_AT_LOAD;
  start_buffer(m7_alloc_bytes(room), room);

  for (u32 i = 0; i < 10; i++)
    m7_append_tms(1);
  m7_append_tms(0);
  Quorlan_Transfer(nullptr, 0, m7_vector_length());
  return 0;
}
}
