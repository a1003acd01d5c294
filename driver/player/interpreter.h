// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The main loop: plays a command file record by record.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Plays the records from g_cfg_start_pos to `length`, or to the first byte that is no record's
// mark, and then releases the download's buffers. `length` is the image's, in bytes.
// Returns 0, also after a mismatch in the last record; RESULT_NO_MEMORY when work was not done for
// want of memory; RESULT_MALFORMED; or RESULT_VERIFY_FAILED when a record starts and g_status is 0
// for any other reason. A record that stops the player leaves the buffers allocated.
s32 m7_play_records(u64 length);

// The same for a caller outside a download: whatever has cleared g_status before, g_stop_code
// starts as 0.
s32 Quorlan_ProcessCmd(u64 length);
}
