// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/record.h"

#include "engine/padding.h"
#include "engine/run_flag.h"
#include "player/reader.h"
#include "util/bit_string.h"
#include "util/memory.h"
#include "util/result.h"

extern "C" {

static u32 *const g_padding_lengths[] = {&g_tdr_len, &g_tir_len, &g_hdr_len, &g_hir_len};
static u8 **const g_padding_data[] = {&g_tdr_data, &g_tir_data, &g_hdr_data, &g_hir_data};

// Reads tag and bytes of a register of `bits` bits into a new block, null for a tag other than TDI.
// Returns false when out of memory.
static bool read_data(u32 bits, u8 **data) {
  if (fgetc() != TAG_TDI)
    return true;
  const u64 count = m7_register_bytes(bits);
  *data = m7_alloc_bytes(count + 1);
  if (!*data)
    return false;
  m7_read_bytes(*data, count);
  (*data)[count] = 0;
  return true;
}

static void store(s32 index, u32 bits, u8 *data) {
  *g_padding_lengths[index] = bits;
  m7_free(*g_padding_data[index]);
  *g_padding_data[index] = data;
}

s32 Quorlan_ProcessHeadAndTrailerCommand(signed char opcode) {
  const u32 bits = static_cast<u32>(Quorlan_ReadNumber());
  u8 *data = nullptr;
  if (bits != 0 && !read_data(bits, &data)) {
    g_stop_code = RESULT_NO_MEMORY;
    return RESULT_NO_MEMORY;
  }

  const s32 index = m7_padding_index(opcode);
  if (index < 0) {
    printk("Error: invalid Head/Trailer format,  unkown opcode.\n\n");
    m7_free(data);
    return RESULT_MALFORMED;
  }

  if (bits != 0)
    fgetc();
  if (m7_read_past_end(0)) {
    m7_free(data);
    return m7_refuse_cut_record();
  }
  store(index, bits, data);
  Quorlan_GenHeadAndTrailerVec(opcode, static_cast<s32>(bits), data);
  return 0;
}

static void release(u8 **data) {
  m7_free(*data);
  *data = nullptr;
}

void m7_release_padding_data(void) {
  // HIR's bytes stay; they only have HDR's freed, null or not. This is deliberate.
  if (g_hir_data || g_hdr_data) {
    kfree(g_hdr_data);
    g_hdr_data = nullptr;
  }
  release(&g_tir_data);
  release(&g_tdr_data);
}

void m7_release_all_padding_data(void) {
  m7_release_padding_data();
  release(&g_hir_data);
}
}
