// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Whether the download is running, and what stopped it.
#pragma once

#include "kernel/kernel.h"
#include "util/result.h"

extern "C" {

// 1 while the download runs, 0 once something has failed; nothing is played then. 1 at load; set
// to 1 by TvbToVec for every download.
extern u32 g_status;

// What stopped the download: RESULT_VERIFY_FAILED for a mismatch (also in the last record, where
// the download still completes), RESULT_NO_MEMORY, or 0 for neither. Set to 0 when a download
// starts, so it can be read until the next one does. 0 at load. Malformed files are not recorded
// here.
extern s32 g_stop_code;

// Stops the download: clears g_status and sets g_stop_code to `code`.
void m7_stop(s32 code);
}
