// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The vector: a JTAG operation written out before it is played, as a NUL-terminated string with
// one character a TCK period. No character is 0, for TCK ends every period high.
//
// A builder of many characters keeps the vector's end and appends there, without a search.
// Functions that take no end measure the vector first and append at its terminator, wherever a
// caller put it.
#pragma once

#include "engine/characters.h"
#include "kernel/kernel.h"

// The bits of g_vec_val.
#define LEVEL_TDI 1
#define LEVEL_EXPECTED 2
#define LEVEL_TMS 3

extern "C" {

// The vector that is built or played, or null. Allocated for a download and freed at a normal end.
// A caller that brings a buffer of its own frees the old one by Quorlan_FreeMemory; the new one
// comes from __kmalloc, holds g_vector_size bytes and has a terminator.
extern u8 *g_vector;

// The longest vector ever requested, in characters. 3200 at load, never lowered.
extern u32 g_vector_size;

// The levels of the next character; bits without a name are kept. 0 at load.
extern u32 g_vec_val;

// Scratch: byte 0 is the last character made, byte 1 is 0.
extern u8 g_buf[2];

// The end of g_vector while it is built.
struct vector_end {
  u64 length;     // index of the terminator
  u64 room;       // bytes of the buffer
  bool given_up;  // nothing is appended: no buffer, or none large enough
};

// Empties the vector for one of `length` characters: raises g_vector_size to it, and allocates
// g_vector_size + 1 bytes where there is no buffer. An existing buffer is kept; it grows when an
// append does not fit. A failure writes "Error: malloc/realloc failed, size %d\n" to the kernel
// log and stops the download.
void Quorlan_MemSet(u32 length);

// Empties the vector for a scan as Quorlan_MemSet(asked) does and sets `end`. Returns false, with
// the download stopped, when there is no buffer, or when none can hold the `needed` characters that
// the scan really has.
bool m7_begin_vector(struct vector_end *end, u32 asked, u64 needed);

// Replaces the buffer by a new one of g_vector_size bytes, with an empty vector. Returns its end.
// A failure is reported and stops the download as by Quorlan_MemSet.
struct vector_end m7_replace_vector(void);

// Call this when g_vector has been freed.
void m7_forget_vector(void);

// Returns the end of the vector as it is.
struct vector_end m7_vector_end(void);

// Returns the number of characters in the vector; 0 without a buffer.
u32 m7_vector_length(void);

// Sets one LEVEL_… field of g_vec_val to `level` (0 or 1).
void m7_set_level(u32 field, u32 level);

// All functions below keep the vector terminated. When an append does not fit, the buffer grows to
// what g_vector_size asks for, or more. If it cannot, that is reported as by Quorlan_MemSet, the
// download is stopped and `end` is given up.

// Grows the buffer to `needed` bytes where it has fewer. Returns false when it cannot.
bool m7_grow_vector(struct vector_end *end, u64 needed);
static inline bool m7_make_room(struct vector_end *end, u64 needed) {
  return needed <= end->room || m7_grow_vector(end, needed);
}

// Appends a string of characters.
void m7_append_characters(struct vector_end *end, const u8 *characters);

// For a builder that writes characters itself, as many appends of one would: returns where the next
// ones go and how many fit there, at least one; null with a count of 0 if the vector is given up.
// m7_appended() takes `count` of them in; the vector is terminated from then on only. It leaves
// g_vec_val and g_buf as they are: m7_set_levels() makes them those of the last character.
static inline u8 *m7_vector_room(struct vector_end *end, u64 *count) {
  *count = 0;
  if (end->given_up || !m7_make_room(end, end->length + 2))
    return nullptr;
  *count = end->room - end->length - 1;
  return g_vector + end->length;
}

static inline void m7_appended(struct vector_end *end, u64 count) {
  end->length += count;
  g_vector[end->length] = 0;
}

void m7_set_levels(u8 character);

// Appends `count` characters so, in as many pieces as it takes.
void m7_append_pieces(struct vector_end *end, const u8 *characters, u32 count);

// The same; inlined, since most walks are of a few characters and fit.
static inline void m7_append_walk(struct vector_end *end, const u8 *characters, u32 count) {
  if (end->given_up || end->room - end->length <= count) {
    m7_append_pieces(end, characters, count);
    return;
  }
  __builtin_memcpy(g_vector + end->length, characters, count);
  m7_appended(end, count);
}

// Appends one character made from g_vec_val.
void Quorlan_GenVec(void);

// Appends one period with the TMS level that leads to a state (numbers 1 to 14), TDI 0. Any other
// number is reported to the kernel log and has TMS 0.
void Quorlan_StateConfig(s32 state);
}
