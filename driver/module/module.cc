// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "module/module.h"

#include "engine/device.h"
#include "kernel/log.h"
#include "module/download.h"
#include "player/record.h"

extern "C" {

// The name in the load messages, which is not the registered one.
#define LOAD_NAME "cpldjtag2_drv"

void *g_tvb_funcs[5] = {reinterpret_cast<void *>(TvbToVec)};
struct tvb_driver g_tvb_drv = {{}, "tvb_cpldjtag_drv", g_tvb_funcs, {3127, 3131, 207}, {}};

static void log_registration(s32 rc) {
  if (rc)
    drv_log_record(LOG_MODULE_LOAD, LOG_ERROR, 0,
                   "m7 cpldjtag_drv runtest compensation module init fail.");
  else
    drv_log_record(LOG_MODULE_LOAD, LOG_INFO, 0,
                   "m7 cpldjtag_drv runtest compensation module init success.");
}

static void log_elapsed(s64 milliseconds) {
  if (milliseconds <= 0)
    drv_log_record(LOG_MODULE_LOAD, LOG_INFO, 0, "%s MODULE INIT END(<1ms)", LOAD_NAME);
  else
    drv_log_record(LOG_MODULE_LOAD, LOG_INFO, 0, "%s MODULE INIT END(%lldms)", LOAD_NAME,
                   static_cast<long long>(milliseconds));
}

s32 init_module(void) {
  const s64 begin = log_get_timestamp_ms();
  drv_log_record(LOG_MODULE_LOAD, LOG_INFO, 0, "%s MODULE INIT BEGIN", LOAD_NAME);
  const s32 rc = cpldjtag_driver_register(&g_tvb_drv);
  log_registration(rc);
  log_elapsed(log_get_timestamp_ms() - begin);
  return rc;
}

void cleanup_module(void) {
  cpldjtag_driver_unregister(g_tvb_drv.name);
  Quorlan_FreeMemory();
  m7_release_all_padding_data();
  drv_log_record(LOG_MODULE_LOAD, LOG_INFO, 0,
                 "cpldjtag_drv runtest compensation module exit success\r\n");
}
}
