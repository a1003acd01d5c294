// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/record.h"

#include "decode/block.h"
#include "engine/run_flag.h"
#include "engine/shift.h"
#include "player/reader.h"
#include "util/bit_string.h"
#include "util/memory.h"

extern "C" {

struct shift_fields {
  u8 *tdi;
  u8 *tdo;
  u8 *mask;
};

static u8 **field_of_tag(struct shift_fields *fields, u32 tag) {
  switch (tag) {
    case TAG_TDI:
      return &fields->tdi;
    case TAG_TDO:
      return &fields->tdo;
    case TAG_MASK:
      return &fields->mask;
    default:
      return nullptr;
  }
}

static void free_fields(struct shift_fields *fields) {
  m7_free(fields->tdi);
  m7_free(fields->tdo);
  m7_free(fields->mask);
}

static s32 read_fields(struct shift_fields *fields, u32 count) {
  for (u32 tag = m7_read_byte(); tag != TAG_END; tag = m7_read_byte()) {
    if (m7_read_past_end(0)) {
      free_fields(fields);
      return m7_refuse_cut_record();
    }
    u8 **field = field_of_tag(fields, tag);
    if (!field) {
      printk("Error: Invalid format when executing process sir or sdr instruction!\n");
      return RESULT_MALFORMED;
    }
    *field = Quorlan_ProcessData(count);
  }
  return 0;
}

static void play_fields(signed char opcode, u32 bits, const struct shift_fields *fields) {
  // A decoder may leave the byte after the register unwritten, and a shift may read it.
  if (fields->mask)
    fields->mask[m7_register_bytes(bits)] = 0;
  if (opcode == OPCODE_SIR)
    Quorlan_SvfShiftInsRegister(bits, fields->tdi, fields->tdo, fields->mask);
  else
    Quorlan_SvfShiftDataRegister(bits, fields->tdi, fields->tdo, fields->mask);
}

s32 Quorlan_ProcessSirAndSdrCommand(signed char opcode) {
  const u32 failures = g_alloc_failures;
  const u32 bits = static_cast<u32>(Quorlan_ReadNumber());
  struct shift_fields fields = {};
  const s32 rc = read_fields(&fields, m7_register_bytes(bits));
  if (rc)
    return rc;

  // Without its mask the scan would compare nothing.
  if (g_alloc_failures != failures)
    m7_stop(RESULT_NO_MEMORY);
  else
    play_fields(opcode, bits, &fields);
  free_fields(&fields);
  return 0;
}

s32 Quorlan_PrintData(s32 count, const u8 *bytes) {
  printk(" (");
  for (s32 i = count; i > 0; i--)
    printk("%02X", static_cast<u32>(Quorlan_ReverseChar(bytes[i - 1])));
  return printk(") ");
}
}
