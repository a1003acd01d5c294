// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/shift.h"

#include "engine/padding.h"
#include "engine/playback.h"
#include "engine/vector.h"
#include "util/bit_string.h"

extern "C" {

#define DATA_WALK 3         // Select-DR-Scan, Capture-DR, Shift-DR
#define INSTRUCTION_WALK 4  // Select-DR-Scan, Select-IR-Scan, Capture-IR, Shift-IR
#define CLOSING 2           // Update, Run-Test/Idle

static void append_data(struct vector_end *end, u32 bits, const u8 *tdi, const u8 *tdo, bool last) {
  for (u32 d = 0; d < bits; d++) {
    m7_set_level(LEVEL_TDI, tdi ? m7_register_bit(tdi, d) : 0);
    m7_set_level(LEVEL_TMS, last && d == bits - 1);
    if (tdo)
      m7_set_level(LEVEL_EXPECTED, m7_register_bit(tdo, d));
    m7_append_levels(end);
  }
}

static void append_register(struct vector_end *end, s32 bits, const u8 *tdi, const u8 *tdo,
                            s32 kind) {
  const u8 *header = kind == KIND_INSTRUCTION ? g_hir_vector : g_hdr_vector;
  const u8 *trailer = kind == KIND_INSTRUCTION ? g_tir_vector : g_tdr_vector;

  if (!tdo)
    m7_set_level(LEVEL_EXPECTED, 0);
  if (header)
    m7_append_characters(end, header);
  if (bits > 0)
    append_data(end, static_cast<u32>(bits), tdi, tdo, !trailer);
  if (trailer)
    m7_append_characters(end, trailer);
}

void Quorlan_SvfShiftExit(s32 bits, const u8 *tdi, const u8 *tdo, s32 kind) {
  struct vector_end end = m7_vector_end();
  append_register(&end, bits, tdi, tdo, kind);
}

static void append_closing(struct vector_end *end) {
  m7_append_tms(end, 1);
  m7_append_tms(end, 0);
}

s32 Quorlan_Reset(void) {
  struct vector_end end = m7_replace_vector();
  for (u32 i = 0; i < 10; i++)
    m7_append_tms(&end, 1);
  m7_append_tms(&end, 0);
  Quorlan_Transfer(nullptr, 0, static_cast<u32>(end.length));
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
  m7_append_tms(end, 1);
  m7_append_tms(end, 1);
  m7_append_tms(end, 0);
  m7_append_tms(end, 0);
  append_register(end, static_cast<s32>(bits), tdi, tdo, KIND_INSTRUCTION);
  append_closing(end);
  return true;
}

static bool build_data_shift(struct vector_end *end, u32 bits, const u8 *tdi, const u8 *tdo) {
  const u64 own = static_cast<u64>(bits) + DATA_WALK + CLOSING;
  if (!m7_begin_vector(end, static_cast<u32>(own) + g_hdr_len + g_tdr_len,
                       own + vector_bits(g_hdr_vector) + vector_bits(g_tdr_vector)))
    return false;
  m7_append_tms(end, 1);
  m7_append_tms(end, 0);
  m7_append_tms(end, 0);
  append_register(end, static_cast<s32>(bits), tdi, tdo, KIND_DATA);
  append_closing(end);
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
    Quorlan_Transfer(mask, g_hir_len + INSTRUCTION_WALK, range_end(&end, g_tir_len));
}

void Quorlan_SvfShiftDataRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask) {
  struct vector_end end;
  if (build_data_shift(&end, bits, tdi, tdo))
    Quorlan_Transfer(mask, g_hdr_len + DATA_WALK, range_end(&end, g_tdr_len));
}

u8 *Quorlan_SvfShiftDataRegisterAndReadTDO(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask) {
  struct vector_end end;
  if (!build_data_shift(&end, bits, tdi, tdo))
    return nullptr;
  return Quorlan_TransferAndReadTDO(mask, g_hdr_len + DATA_WALK, range_end(&end, g_tdr_len));
}
}
