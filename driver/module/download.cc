// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "module/download.h"

#include "engine/run_flag.h"
#include "engine/shift.h"
#include "jtag_gpio.h"
#include "kernel/log.h"
#include "player/interpreter.h"
#include "player/prescan.h"
#include "player/reader.h"

extern "C" {

static s32 play_image(u64 length) {
  const s32 rc = Quorlan_ReadTvbHeader();
  if (rc) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "m7 pls check head\r\n");
    return rc;
  }
  Quorlan_Reset();
  if (Quorlan_ReadChipIdcode())
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_ERROR, 0, "m7 cannot read chip id\r\n");
  return m7_play_records(length);
}

s32 Quorlan_HandleTvbContent(const u8 *, u64 length) {
  g_tvb_length = length;
  g_stop_code = 0;
  g_read_limit = g_tvb_buffer ? length : 0;
  const s32 rc = play_image(length);
  g_read_limit = READ_LIMIT_NONE;
  return rc;
}

s32 TvbToVec(struct download_context *context, const u8 *image, u32 length) {
  g_tvb_buffer = image;
  g_status = 1;
  if (!image || length == 0) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_ERROR, 0, "Please specify the file\r\n");
    return DOWNLOAD_REJECTED;
  }

  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "m7 cplddownload start file len %u\r\n", length);
  if (!context || !context->pins || !context->operations) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_ERROR, 0, "m7 cplddownload para null.\r\n");
    return DOWNLOAD_REJECTED;
  }

  g_tvb_cpld_cfg = context->pins;
  g_tvb_jtag_funcs = context->operations;
  if (!g_tvb_jtag_funcs->drive_high || !g_tvb_jtag_funcs->drive_low || !g_tvb_jtag_funcs->read) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_ERROR, 0, "m7 cplddownload funcs null.\r\n");
    return DOWNLOAD_REJECTED;
  }

  const s32 rc = Quorlan_HandleTvbContent(g_tvb_buffer, length);
  g_tvb_buffer = nullptr;
  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "m7 cplddownload end rtn_code %d\r\n", rc);
  return rc ? DOWNLOAD_FAILED : DOWNLOAD_DONE;
}
}
