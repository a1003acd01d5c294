// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/vector.h"

#include "engine/run_flag.h"
#include "util/memory.h"

extern "C" {

#define VECTOR_SIZE_AT_LOAD 3200

u8 *g_vector;
u32 g_vector_size = VECTOR_SIZE_AT_LOAD;
u32 g_vec_val;
u8 g_buf[2];

// The size of the last buffer allocated here; g_vector_size may have been raised since.
static struct {
  const u8 *vector;
  u64 room;  // its bytes
  u32 size;  // g_vector_size as it was then
} g_vector_room;

// Only a caller lowers g_vector_size. It then brings a buffer too, perhaps at the address of an
// earlier one.
static bool is_own_buffer(void) {
  return g_vector_room.vector == g_vector && g_vector_room.size <= g_vector_size;
}

static u64 string_length(const u8 *characters) {
  return strlen(reinterpret_cast<const char *>(characters));
}

// Not by strlen: the buffer may have no room for a terminator, or a caller may have overwritten it.
static u64 own_length(void) {
  u64 length = 0;
  while (length < g_vector_room.room && g_vector[length] != 0)
    length++;
  return length;
}

u32 m7_vector_length(void) {
  if (!g_vector)
    return 0;
  return static_cast<u32>(is_own_buffer() ? own_length() : string_length(g_vector));
}

struct vector_end m7_vector_end(void) {
  if (!g_vector)
    return {0, 0, true};
  if (is_own_buffer())
    return {own_length(), g_vector_room.room, false};
  const u64 length = string_length(g_vector);
  return {length, length < g_vector_size ? g_vector_size : length + 1, false};
}

static void give_up(struct vector_end *end) {
  end->given_up = true;
  m7_stop(RESULT_NO_MEMORY);
  printk("Error: malloc/realloc failed, size %d\n", static_cast<s32>(g_vector_size));
}

// Makes `buffer` (null: none) of `room` bytes the vector's and empties the vector.
static struct vector_end start_buffer(u8 *buffer, u64 room) {
  g_vector = buffer;
  g_vector_room = {buffer, room, g_vector_size};
  struct vector_end end = {0, room, false};
  if (!buffer)
    give_up(&end);
  else if (room > 0)
    buffer[0] = 0;
  return end;
}

static struct vector_end empty_vector(u32 length) {
  const u64 callers_room = g_vector_size > 0 ? g_vector_size : 1;
  const u64 room = is_own_buffer() ? g_vector_room.room : callers_room;
  if (g_vector_size < length)
    g_vector_size = length;
  if (g_vector)
    return start_buffer(g_vector, room);
  const u64 wanted = static_cast<u64>(g_vector_size) + 1;
  return start_buffer(m7_alloc_bytes(wanted), wanted);
}

void Quorlan_MemSet(u32 length) {
  empty_vector(length);
}

bool m7_begin_vector(struct vector_end *end, u32 asked, u64 needed) {
  *end = empty_vector(asked);
  if (!end->given_up && needed >= M7_ALLOC_MAX)
    give_up(end);
  return !end->given_up;
}

struct vector_end m7_replace_vector(void) {
  m7_free(g_vector);
  g_vector = nullptr;
  // One request for an impossible length must not end every later download.
  const u32 room = g_vector_size <= M7_ALLOC_MAX ? g_vector_size : VECTOR_SIZE_AT_LOAD;
  return start_buffer(m7_alloc_bytes(room), room);
}

void m7_forget_vector(void) {
  g_vector_room = {};
}

// Returns the size to grow to from `room` for `needed` bytes: what g_vector_size asks for, unless
// that is too little or more than the allocator allows.
static u64 grown_size(u64 room, u64 needed) {
  const u64 asked = static_cast<u64>(g_vector_size) + 1;
  if (asked >= needed && asked <= M7_ALLOC_MAX)
    return asked;
  const u64 doubled = 2 * room;
  if (doubled <= M7_ALLOC_MAX)
    return doubled < needed ? needed : doubled;
  return needed <= M7_ALLOC_MAX ? M7_ALLOC_MAX : needed;
}

bool m7_grow_vector(struct vector_end *end, u64 needed) {
  const u64 size = grown_size(end->room, needed);
  u8 *grown = m7_realloc_bytes(g_vector, size);
  if (!grown) {
    give_up(end);
    return false;
  }
  g_vector = grown;
  g_vector_room = {grown, size, g_vector_size};
  end->room = size;
  return true;
}

static void append(struct vector_end *end, const u8 *characters, u64 count) {
  if (end->given_up || !m7_make_room(end, end->length + count + 1))
    return;
  memcpy(g_vector + end->length, characters, count);
  end->length += count;
  g_vector[end->length] = 0;
}

void m7_append_characters(struct vector_end *end, const u8 *characters) {
  append(end, characters, string_length(characters));
}

void m7_set_level(u32 field, u32 level) {
  g_vec_val = (g_vec_val & ~(1u << field)) | level << field;
}

static void append_levels(struct vector_end *end) {
  const u32 tdi = g_vec_val >> LEVEL_TDI & 1;
  const u32 tms = g_vec_val >> LEVEL_TMS & 1;
  const u32 expected = g_vec_val >> LEVEL_EXPECTED & 1;
  const u32 levels = tdi << 2 | tms << 1 | expected;
  g_buf[0] = static_cast<u8>(levels << 4 | 1u << VECTOR_TCK_SECOND | levels);
  append(end, g_buf, 1);
}

void m7_set_levels(u8 character) {
  const u32 levels = static_cast<u32>(character >> VECTOR_TDI & 1) << LEVEL_TDI |
                     static_cast<u32>(character >> VECTOR_TMS & 1) << LEVEL_TMS |
                     static_cast<u32>(character >> VECTOR_EXPECTED & 1) << LEVEL_EXPECTED;
  const u32 all = 1u << LEVEL_TDI | 1u << LEVEL_TMS | 1u << LEVEL_EXPECTED;
  g_vec_val = (g_vec_val & ~all) | levels;
  g_buf[0] = character;
}

void m7_append_pieces(struct vector_end *end, const u8 *characters, u32 count) {
  for (u32 done = 0; done < count;) {
    u64 room;
    u8 *place = m7_vector_room(end, &room);
    if (!place)
      return;
    const u32 fit = room < count - done ? static_cast<u32>(room) : count - done;
    for (u32 i = 0; i < fit; i++)
      place[i] = characters[done++];
    m7_appended(end, fit);
  }
}

void Quorlan_GenVec(void) {
  struct vector_end end = m7_vector_end();
  append_levels(&end);
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
}
