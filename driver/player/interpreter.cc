// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "player/interpreter.h"

#include "engine/device.h"
#include "engine/run_flag.h"
#include "kernel/log.h"
#include "player/reader.h"
#include "player/record.h"
#include "runtest/runtest.h"

extern "C" {

// The smallest L of a run-test record with fields: opcode, gate byte and one more.
#define RUNTEST_LENGTH_MIN 24
#define RUNTEST_GATE_OPEN 1

// One loop at a time: loops do not nest.
struct loop {
  s32 counter;
  u64 start;  // index of the body's first record
};

static s32 play_runtest(s64 length) {
  const u32 gate = fgetc();
  if (m7_read_past_end(0))
    return m7_refuse_cut_record();
  if (length < RUNTEST_LENGTH_MIN || gate != RUNTEST_GATE_OPEN)
    return 0;

  const u64 fields = g_pos;
  const u64 cycles = Quorlan_ProcessRuntestCmd();
  // At the end of the file the byte after the last field may be missing, but not the first field.
  const bool has_field = g_pos > fields + 1;
  if (m7_read_past_end(has_field ? 1 : 0))
    return m7_refuse_cut_record();
  Quorlan_KeepCycle(static_cast<s32>(cycles));
  return 0;
}

static s32 set_frequency(void) {
  const u64 frequency = Quorlan_ReadNumber();
  if (m7_read_past_end(0))
    return m7_refuse_cut_record();
  if (g_freq == 0 || static_cast<s64>(g_freq) > static_cast<s64>(frequency))
    g_freq = frequency;
  return 0;
}

static s32 play_padding(signed char opcode) {
  const s32 rc = Quorlan_ProcessHeadAndTrailerCommand(opcode);
  if (rc)
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "Exe head or trailer command error\r\n");
  return rc;
}

static s32 play_shift(signed char opcode) {
  const s32 rc = Quorlan_ProcessSirAndSdrCommand(opcode);
  if (rc)
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0,
                   "Error: Execute sir/sdr instruction fail!\r\n");
  return rc;
}

static s32 refuse_opcode(void) {
  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "Error: invalid file format, unkown opcode\r\n");
  return RESULT_MALFORMED;
}

static s32 open_loop(struct loop *loop) {
  loop->counter = static_cast<s32>(Quorlan_ReadNumber());
  loop->start = g_pos;
  return m7_read_past_end(0) ? m7_refuse_cut_record() : 0;
}

static s32 close_loop(struct loop *loop) {
  if (loop->counter >= 2) {
    loop->counter--;
    g_pos = loop->start;
  }
  return 0;
}

static s32 play_record(struct loop *loop) {
  const u64 mark = g_pos - 1;
  const s64 length = static_cast<s64>(Quorlan_ReadNumber());
  const u64 opcode_pos = g_pos;
  const signed char opcode = static_cast<signed char>(m7_read_byte());
  if (m7_read_past_end(0))
    return m7_refuse_cut_record();

  switch (opcode) {
    case OPCODE_RESERVED_1:
    case OPCODE_RESERVED_5:
    case OPCODE_RESERVED_6:
    case OPCODE_RESERVED_19:
      return m7_skip_record(mark, opcode_pos, length, 0) ? 0 : m7_refuse_cut_record();
    case OPCODE_RUNTEST:
      return play_runtest(length);
    case OPCODE_FREQUENCY:
      return set_frequency();
    case OPCODE_TDR:
    case OPCODE_TIR:
    case OPCODE_HDR:
    case OPCODE_HIR:
      return play_padding(opcode);
    case OPCODE_SDR:
    case OPCODE_SIR:
      return play_shift(opcode);
    case OPCODE_LOOP:
      return open_loop(loop);
    case OPCODE_ENDLOOP:
      return close_loop(loop);
    default:
      return refuse_opcode();
  }
}

static void end_file(void) {
  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "m7 process done file len %u\r\n",
                 static_cast<u32>(g_pos));
  Quorlan_FreeMemory();
  m7_release_padding_data();
}

s32 m7_play_records(u64 length) {
  struct loop loop = {};
  g_pos = g_cfg_start_pos;
  while (static_cast<s64>(g_pos) < static_cast<s64>(length) && m7_read_byte() == RECORD_MARK) {
    if (g_status == 0)
      return g_stop_code == RESULT_NO_MEMORY ? RESULT_NO_MEMORY : RESULT_VERIFY_FAILED;
    const s32 rc = play_record(&loop);
    if (rc)
      return rc;
  }
  end_file();
  // A mismatch in the last record does not make the download fail, which is deliberate. Work left
  // undone for lack of memory does.
  return g_status == 0 && g_stop_code == RESULT_NO_MEMORY ? RESULT_NO_MEMORY : 0;
}

s32 Quorlan_ProcessCmd(u64 length) {
  g_stop_code = 0;
  return m7_play_records(length);
}
}
