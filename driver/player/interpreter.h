// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The main loop: plays a command file record by record.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Plays the records from g_cfg_start_pos to `length`, or to the first byte that is no record's
// mark, and then frees the download's buffers. `length` is the image's, in bytes.
// Returns 0, even after a mismatch in the last record; RESULT_MALFORMED; RESULT_NO_MEMORY when a
// failed allocation has stopped the download, before these records or in them; or
// RESULT_VERIFY_FAILED when g_status is 0 for another reason as a record starts. An error before
// the end of the file leaves the buffers allocated.
s32 m7_play_records(u64 length);

// The same outside a download: sets g_stop_code to 0 first, so that an earlier failed allocation
// does not count.
s32 Quorlan_ProcessCmd(u64 length);
}
