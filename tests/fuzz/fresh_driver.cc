// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "fuzz/fresh_driver.h"

#include "driver/host.h"

namespace fuzz {

void FreshDriver() {
  g_freq = 0;
  g_status = 1;
  g_vec_val = 0;
  g_vector_size = 3200;
  g_tdr_len = g_tir_len = g_hdr_len = g_hir_len = 0;
  g_idcode_pub = 6;
  g_io_len = 0;
  g_compress = 0;
}

}  // namespace fuzz
