// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver's state at load: every global that a harness knows and its value, in the order of the
// driver's folders. Any other state of the driver must not need a reset.
#include <cstring>

#include "host.h"
#include "shim/allocator.h"
#include "shim/fixture.h"

namespace shim {
namespace {

void Drop(uint8_t **held) {
  if (IsLive(*held)) {
    kfree(*held);
  }
  *held = nullptr;
}

// The session's buffers may hold the same block twice, or any pointer of a test.
void DropSessionBuffers() {
  for (uint8_t **held :
       {&g_vector, &g_tdr_vector, &g_tir_vector, &g_hdr_vector, &g_hir_vector, &g_tdr_data,
        &g_tir_data, &g_hdr_data, &g_hir_data, &g_chip_idcode, &g_chip_io_status, &g_watch_ios}) {
    Drop(held);
  }
  Quorlan_FreeMemory();
}

// The record that the framework may write to.
void ResetRecord() {
  static const tvb_driver at_load = g_tvb_drv;
  g_tvb_drv = at_load;
}

void ResetPlayer() {
  g_tvb_buffer = nullptr;
  g_tvb_length = 0;
  g_pos = 0;
  std::memset(g_buffer, 0, sizeof(g_buffer));
  g_compress = 0;
  g_cfg_start_pos = 0;
  g_cur_level = 0;
  g_total_level = 0;
}

void ResetEngine() {
  g_tvb_cpld_cfg = nullptr;
  g_tvb_jtag_funcs = nullptr;
  g_freq = 0;
  g_status = 1;
  g_vector_size = 3200;
  g_vec_val = 0;
  std::memset(g_buf, 0, sizeof(g_buf));
  g_tdr_len = g_tir_len = g_hdr_len = g_hir_len = 0;
  g_idcode_pub = 6;
  g_io_len = 0;
}

void ResetDecoders() {
  g_pWriteBuffer = nullptr;
  g_iWriteCount = 0;
}

}  // namespace

void ResetDriverGlobals() {
  DropSessionBuffers();
  ResetRecord();
  ResetPlayer();
  ResetEngine();
  ResetDecoders();
}

}  // namespace shim
