// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/padding.h"

#include "engine/characters.h"
#include "engine/run_flag.h"
#include "util/memory.h"

extern "C" {

#define OPCODE_FIRST 9
#define INDEX_TIR 1  // the trailers are the registers up to here

u32 g_tdr_len, g_tir_len, g_hdr_len, g_hir_len;
u8 *g_tdr_data, *g_tir_data, *g_hdr_data, *g_hir_data;
u8 *g_tdr_vector, *g_tir_vector, *g_hdr_vector, *g_hir_vector;

static u8 **const g_padding_vectors[] = {&g_tdr_vector, &g_tir_vector, &g_hdr_vector,
                                         &g_hir_vector};

s32 m7_padding_index(signed char opcode) {
  const s32 index = opcode - OPCODE_FIRST;
  return index >= 0 && index <= 3 ? index : -1;
}

void Quorlan_GenHeadAndTrailerVec(signed char opcode, s32 bits, const u8 *data) {
  const s32 index = m7_padding_index(opcode);
  if (index < 0) {
    printk("Error: Generate Head/Trailer vector failed: unkown opcode.\n\n");
    return;
  }

  u8 **vector = g_padding_vectors[index];
  m7_free(*vector);
  *vector = nullptr;
  if (bits == 0)
    return;
  u8 *built = bits > 0 ? m7_alloc_bytes(static_cast<u64>(bits) + 1) : nullptr;
  if (!built) {
    m7_stop(RESULT_NO_MEMORY);
    return;
  }

  const struct registers registers = {data, nullptr};
  m7_put_characters(built, &registers, 0, static_cast<u32>(bits));
  built[bits] = 0;
  if (index <= INDEX_TIR)
    built[bits - 1] |= CHARACTER_ADD_TMS;
  *vector = built;
}
}
