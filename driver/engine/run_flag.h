// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Whether the download runs, and what stopped it.
#pragma once

#include "kernel/kernel.h"
#include "util/result.h"

extern "C" {

// 1 while the download runs, 0 once something has failed: nothing is played then. 1 at load; set
// to 1 by TvbToVec for every download.
extern u32 g_status;

// What stopped the download: 0 for nothing, RESULT_VERIFY_FAILED for a mismatch, that of the last
// record included, or RESULT_NO_MEMORY. 0 at load and when a download starts; stays readable until
// the next one does. A malformed file does not show here.
extern s32 g_stop_code;

// Clears g_status and sets g_stop_code to `code`: nothing more is played.
void m7_stop(s32 code);
}
