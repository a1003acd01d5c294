// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/padding.h"

#include "engine/run_flag.h"
#include "engine/vector.h"
#include "util/bit_string.h"
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

static void fill_vector(u8 *vector, u32 bits, const u8 *data) {
  for (u32 d = 0; d < bits; d++) {
    const bool one = data && m7_register_bit(data, d);
    vector[d] = one ? CHARACTER_TMS_0 + CHARACTER_ADD_TDI : CHARACTER_TMS_0;
  }
  vector[bits] = 0;
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

  fill_vector(built, static_cast<u32>(bits), data);
  if (index <= INDEX_TIR)
    built[bits - 1] |= CHARACTER_ADD_TMS;
  *vector = built;
}
}
