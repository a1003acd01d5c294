// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/session.h"

#include "engine/device.h"
#include "engine/io_status.h"
#include "engine/padding.h"
#include "engine/vector.h"

extern "C" {

static u8 **const g_session_buffers[] = {&g_vector,         &g_tir_vector, &g_tdr_vector,
                                         &g_hir_vector,     &g_hdr_vector, &g_chip_idcode,
                                         &g_chip_io_status, &g_watch_ios};

void Quorlan_FreeMemory(void) {
  for (u8 **buffer : g_session_buffers) {
    kfree(*buffer);
    *buffer = nullptr;
  }
  m7_forget_vector();
}
}
