// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The main loop: plays a command file record by record.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Plays the records from g_cfg_start_pos to `length`, or to the first byte that is no record's
// mark, and then releases the download's buffers. `length` is the image's, in bytes.
// Returns 0; or RESULT_NO_MEMORY when work of the last record was not done for want of memory; or,
// at the record where it stopped and with the buffers not released, RESULT_VERIFY_FAILED (when a
// record starts and g_status is 0, so that a failure in the last record goes unseen),
// RESULT_MALFORMED or RESULT_NO_MEMORY.
s32 Quorlan_ProcessCmd(u64 length);
}
