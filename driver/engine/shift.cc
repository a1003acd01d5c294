// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/shift.h"

#include "engine/padding.h"
#include "engine/playback.h"
#include "engine/vector.h"
#include "util/bit_string.h"

extern "C" {

// The periods that lead from Run-Test/Idle to the shift, and back.
#define DATA_WALK 3  // Select-DR-Scan, Capture-DR, Shift-DR
static const u8 data_walk[DATA_WALK] = {CHARACTER_TMS_1, CHARACTER_TMS_0, CHARACTER_TMS_0};
#define INSTRUCTION_WALK 4  // Select-DR-Scan, Select-IR-Scan, Capture-IR, Shift-IR
static const u8 instruction_walk[INSTRUCTION_WALK] = {CHARACTER_TMS_1, CHARACTER_TMS_1,
                                                      CHARACTER_TMS_0, CHARACTER_TMS_0};
#define CLOSING 2  // Update, Run-Test/Idle
static const u8 closing[CLOSING] = {CHARACTER_TMS_1, CHARACTER_TMS_0};

// The registers of a scan; null: zeros.
struct registers {
  const u8 *tdi;
  const u8 *tdo;
};

static u8 character_of(const struct registers *registers, u32 d) {
  u32 character = CHARACTER_TMS_0;
  if (registers->tdi)
    character += CHARACTER_ADD_TDI * m7_register_bit(registers->tdi, d);
  if (registers->tdo)
    character += CHARACTER_ADD_EXPECTED * m7_register_bit(registers->tdo, d);
  return static_cast<u8>(character);
}

// Returns the bits of a byte as eight bytes of 0 or 1, the first of them that of the most
// significant bit.
static u64 spread(u8 byte) {
  const u64 each = 0x0101010101010101;
  const u64 picked = byte * each & 0x0102040810204080;
  return (picked + 0x7F * each) >> 7 & each;
}

static void put_eight(u8 *place, const struct registers *registers, u32 d) {
  u64 characters = CHARACTER_TMS_0 * 0x0101010101010101;
  if (registers->tdi)
    characters += CHARACTER_ADD_TDI * spread(registers->tdi[d / 8]);
  if (registers->tdo)
    characters += CHARACTER_ADD_EXPECTED * spread(registers->tdo[d / 8]);
  __builtin_memcpy(place, &characters, sizeof(characters));
}

// Puts the characters of the bits from `d` up to `to`.
static void put_data(u8 *place, const struct registers *registers, u32 d, u32 to) {
  for (; d < to && d % 8 != 0; d++)
    *place++ = character_of(registers, d);
  for (; to - d >= 8; d += 8, place += 8)
    put_eight(place, registers, d);
  for (; d < to; d++)
    *place++ = character_of(registers, d);
}

static void append_data(struct vector_end *end, u32 bits, const struct registers *registers,
                        bool last) {
  for (u32 d = 0; d < bits;) {
    u64 room;
    u8 *place = m7_vector_room(end, &room);
    if (!place)
      break;
    const u32 count = room < bits - d ? static_cast<u32>(room) : bits - d;
    put_data(place, registers, d, d + count);
    d += count;
    if (last && d == bits)
      place[count - 1] |= CHARACTER_ADD_TMS;
    m7_appended(end, count);
  }
  const u8 character = character_of(registers, bits - 1);
  m7_set_levels(last ? character | CHARACTER_ADD_TMS : character);
}

static void append_register(struct vector_end *end, s32 bits, const u8 *tdi, const u8 *tdo,
                            s32 kind) {
  const u8 *header = kind == KIND_INSTRUCTION ? g_hir_vector : g_hdr_vector;
  const u8 *trailer = kind == KIND_INSTRUCTION ? g_tir_vector : g_tdr_vector;

  if (!tdo)
    m7_set_level(LEVEL_EXPECTED, 0);
  if (header)
    m7_append_characters(end, header);
  const struct registers registers = {tdi, tdo};
  if (bits > 0)
    append_data(end, static_cast<u32>(bits), &registers, !trailer);
  if (trailer)
    m7_append_characters(end, trailer);
}

void Quorlan_SvfShiftExit(s32 bits, const u8 *tdi, const u8 *tdo, s32 kind) {
  struct vector_end end = m7_vector_end();
  append_register(&end, bits, tdi, tdo, kind);
}

s32 Quorlan_Reset(void) {
  struct vector_end end = m7_replace_vector();
  const u8 high = CHARACTER_TMS_1;
  const u8 low = CHARACTER_TMS_0;
  for (u32 i = 0; i < 10; i++)
    m7_append_walk(&end, &high, 1);
  m7_append_walk(&end, &low, 1);
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
  m7_append_walk(end, instruction_walk, INSTRUCTION_WALK);
  append_register(end, static_cast<s32>(bits), tdi, tdo, KIND_INSTRUCTION);
  m7_append_walk(end, closing, CLOSING);
  return true;
}

static bool build_data_shift(struct vector_end *end, u32 bits, const u8 *tdi, const u8 *tdo) {
  const u64 own = static_cast<u64>(bits) + DATA_WALK + CLOSING;
  if (!m7_begin_vector(end, static_cast<u32>(own) + g_hdr_len + g_tdr_len,
                       own + vector_bits(g_hdr_vector) + vector_bits(g_tdr_vector)))
    return false;
  m7_append_walk(end, data_walk, DATA_WALK);
  append_register(end, static_cast<s32>(bits), tdi, tdo, KIND_DATA);
  m7_append_walk(end, closing, CLOSING);
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
