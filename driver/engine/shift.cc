// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/shift.h"

#include "engine/characters.h"
#include "engine/padding.h"
#include "engine/playback.h"
#include "engine/vector.h"

extern "C" {

// The periods that lead from Run-Test/Idle to the shift, and back.
#define DATA_WALK 3  // Select-DR-Scan, Capture-DR, Shift-DR
static const u8 data_walk[DATA_WALK] = {CHARACTER_TMS_1, CHARACTER_TMS_0, CHARACTER_TMS_0};
#define INSTRUCTION_WALK 4  // Select-DR-Scan, Select-IR-Scan, Capture-IR, Shift-IR
static const u8 instruction_walk[INSTRUCTION_WALK] = {CHARACTER_TMS_1, CHARACTER_TMS_1,
                                                      CHARACTER_TMS_0, CHARACTER_TMS_0};
#define RESET_WALK 11
static const u8 reset_walk[RESET_WALK] = {CHARACTER_TMS_1, CHARACTER_TMS_1, CHARACTER_TMS_1,
                                          CHARACTER_TMS_1, CHARACTER_TMS_1, CHARACTER_TMS_1,
                                          CHARACTER_TMS_1, CHARACTER_TMS_1, CHARACTER_TMS_1,
                                          CHARACTER_TMS_1, CHARACTER_TMS_0};
#define CLOSING 2  // Update, Run-Test/Idle
static const u8 closing[CLOSING] = {CHARACTER_TMS_1, CHARACTER_TMS_0};

static void append_data(struct vector_end *end, u32 bits, const struct registers *registers,
                        bool last) {
  for (u32 d = 0; d < bits;) {
    u64 room;
    u8 *place = m7_vector_room(end, &room);
    if (!place)
      break;
    const u32 count = room < bits - d ? static_cast<u32>(room) : bits - d;
    m7_put_characters(place, registers, d, d + count);
    d += count;
    if (last && d == bits)
      place[count - 1] |= CHARACTER_ADD_TMS;
    m7_appended(end, count);
  }
}

// Returns the trailer of the scans of a kind, which ends them, or null.
static const u8 *trailer_of(s32 kind) {
  return kind == KIND_INSTRUCTION ? g_tir_vector : g_tdr_vector;
}

static void append_register(struct vector_end *end, s32 bits, const struct registers *registers,
                            s32 kind) {
  const u8 *header = kind == KIND_INSTRUCTION ? g_hir_vector : g_hdr_vector;
  const u8 *trailer = trailer_of(kind);

  if (header)
    m7_append_characters(end, header);
  if (bits > 0)
    append_data(end, static_cast<u32>(bits), registers, !trailer);
  if (trailer)
    m7_append_characters(end, trailer);
}

void Quorlan_SvfShiftExit(s32 bits, const u8 *tdi, const u8 *tdo, s32 kind) {
  const struct registers registers = {tdi, tdo};
  if (!tdo)
    m7_set_level(LEVEL_EXPECTED, 0);
  if (bits > 0) {
    const u8 last = m7_character(&registers, static_cast<u32>(bits) - 1);
    m7_set_levels(trailer_of(kind) ? last : last | CHARACTER_ADD_TMS);
  }
  struct vector_end end = m7_vector_end();
  append_register(&end, bits, &registers, kind);
}

s32 Quorlan_Reset(void) {
  struct vector_end end = m7_replace_vector();
  m7_append_walk(&end, reset_walk, RESET_WALK);
  m7_set_levels(CHARACTER_TMS_0);
  m7_transfer(nullptr, 0, static_cast<u32>(end.length), static_cast<u32>(end.length));
  return 0;
}

static u64 vector_bits(const u8 *vector) {
  return vector ? strlen(reinterpret_cast<const char *>(vector)) : 0;
}

static bool build_instruction_shift(struct vector_end *end, u32 bits, const u8 *tdi,
                                    const u8 *tdo) {
  const u64 own = static_cast<u64>(bits) + INSTRUCTION_WALK + CLOSING;
  // A length that has outlived its vector is requested, but takes no room. The sum is one of 32
  // bits, so that even the largest such length does not stop later scans.
  if (!m7_begin_vector(end, static_cast<u32>(own) + g_hir_len + g_tir_len,
                       own + vector_bits(g_hir_vector) + vector_bits(g_tir_vector)))
    return false;
  const struct registers registers = {tdi, tdo};
  m7_append_walk(end, instruction_walk, INSTRUCTION_WALK);
  append_register(end, static_cast<s32>(bits), &registers, KIND_INSTRUCTION);
  m7_append_walk(end, closing, CLOSING);
  m7_set_levels(CHARACTER_TMS_0);
  return true;
}

static bool build_data_shift(struct vector_end *end, u32 bits, const u8 *tdi, const u8 *tdo) {
  const u64 own = static_cast<u64>(bits) + DATA_WALK + CLOSING;
  if (!m7_begin_vector(end, static_cast<u32>(own) + g_hdr_len + g_tdr_len,
                       own + vector_bits(g_hdr_vector) + vector_bits(g_tdr_vector)))
    return false;
  const struct registers registers = {tdi, tdo};
  m7_append_walk(end, data_walk, DATA_WALK);
  append_register(end, static_cast<s32>(bits), &registers, KIND_DATA);
  m7_append_walk(end, closing, CLOSING);
  m7_set_levels(CHARACTER_TMS_0);
  return true;
}

// The range's end counts back from the vector's, in unsigned 32 bits: a length that has outlived
// its vector moves the range, and the playback takes it as it is.
static u32 range_end(const struct vector_end *end, u32 trailer) {
  return static_cast<u32>(end->length) - trailer - CLOSING;
}

void Quorlan_SvfShiftInsRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask) {
  struct vector_end end;
  if (build_instruction_shift(&end, bits, tdi, tdo))
    m7_transfer(mask, g_hir_len + INSTRUCTION_WALK, range_end(&end, g_tir_len),
                static_cast<u32>(end.length));
}

void Quorlan_SvfShiftDataRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask) {
  struct vector_end end;
  if (build_data_shift(&end, bits, tdi, tdo))
    m7_transfer(mask, g_hdr_len + DATA_WALK, range_end(&end, g_tdr_len),
                static_cast<u32>(end.length));
}

u8 *Quorlan_SvfShiftDataRegisterAndReadTDO(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask) {
  struct vector_end end;
  if (!build_data_shift(&end, bits, tdi, tdo))
    return nullptr;
  return m7_transfer_and_read(mask, g_hdr_len + DATA_WALK, range_end(&end, g_tdr_len),
                              static_cast<u32>(end.length));
}
}
