// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/prescan.h"

#include "decode/block.h"
#include "engine/device.h"
#include "player/reader.h"
#include "player/record.h"
#include "util/bit_string.h"
#include "util/result.h"

extern "C" {

#define STRAY_BYTE 1  // discarded between two records
#define BYPASS 0xFF
#define IDCODE_INSTRUCTION_E0 0xE0

u32 g_cur_level;
u32 g_total_level;

// Returns whether a byte was not all ones.
static bool count_bypassed(const u8 *data, u32 count, u32 *after, u32 *before) {
  bool target_seen = false;
  for (u32 i = count; i-- > 0;) {
    const u32 instruction = static_cast<u32>(Quorlan_ReverseChar(data[i]));
    if (instruction == IDCODE_INSTRUCTION_E0)
      g_idcode_pub = IDCODE_INSTRUCTION_E0;
    if (instruction != BYPASS)
      target_seen = true;
    else
      ++*(target_seen ? after : before);
  }
  return target_seen;
}

static void report_format(void) {
  printk("Error: Invalid format when executing read sir information!\n");
}

s32 Quorlan_ReadSirInfo(u32 *after, u32 *before) {
  *after = 0;
  *before = 0;
  const u32 bits = static_cast<u32>(Quorlan_ReadNumber());
  if (fgetc() != TAG_TDI) {
    report_format();
    g_pos -= static_cast<u64>(bits) - 1;
    return RESULT_BAD_HEADER;
  }

  const u32 count = m7_register_bytes(bits);
  const u8 *data = Quorlan_ProcessData(count);
  if (!data)
    return RESULT_NO_MEMORY;

  const bool target_seen = count_bypassed(data, count, after, before);
  if (fgetc() != TAG_END) {
    report_format();
    return 0;
  }
  return target_seen;
}

// Reads the body of a TDR or HDR record. Returns its length in bits, which is the number of
// bypassed devices.
static u32 read_padding_length(void) {
  const u32 bits = static_cast<u32>(Quorlan_ReadNumber());
  if (bits != 0) {
    while (fgetc() != TAG_END && !m7_read_past_end(0)) {
    }
  }
  return bits;
}

// Bypassed devices before the target, at the TDI end, and after it, as the records tell them.
struct chain {
  u32 sir_before;
  u32 sir_after;
  u32 tdr;  // before
  u32 hdr;  // after
};

// Reads one record. Returns 0 when the scan may go on.
static s32 scan_record(struct chain *chain) {
  const u64 mark = g_pos - 1;
  const s64 length = static_cast<s64>(Quorlan_ReadNumber());
  const u64 opcode_pos = g_pos;
  const signed char opcode = static_cast<signed char>(fgetc());
  switch (opcode) {
    case OPCODE_TDR:
      chain->tdr = read_padding_length();
      return 0;
    case OPCODE_HDR:
      chain->hdr = read_padding_length();
      return 0;
    case OPCODE_SIR:
      return Quorlan_ReadSirInfo(&chain->sir_after, &chain->sir_before);
    default:
      return m7_skip_record(mark, opcode_pos, length, STRAY_BYTE) ? 0 : RESULT_MALFORMED;
  }
}

s32 Quorlan_ReadChipIdcode(void) {
  struct chain chain = {};
  while (fgetc() == RECORD_MARK) {
    const s32 rc = scan_record(&chain);
    // This takes the next record's mark, so the scan of a well-formed file ends after its first
    // record. This is deliberate.
    fgetc();
    if (rc)
      break;
  }
  g_cur_level = chain.tdr + chain.sir_before + 1;
  g_total_level = g_cur_level + chain.hdr + chain.sir_after;
  Quorlan_ReadIdCode(g_cur_level, g_total_level);
  return 0;
}
}
