// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The download operation, which the framework calls.
#pragma once

#include "kernel/framework.h"

// Results of TvbToVec.
#define DOWNLOAD_DONE 1
#define DOWNLOAD_FAILED 0
#define DOWNLOAD_REJECTED (-2)

extern "C" {

// Plays the command file `image` of `length` bytes on the lines that `context` gives. Both stay
// the caller's. One download at a time; runs in process context, may sleep, and waits busily.
// Returns DOWNLOAD_DONE, DOWNLOAD_FAILED, or DOWNLOAD_REJECTED for a missing image, context, pin
// record, operation table or callback. g_tvb_buffer and g_status are set in any case.
s32 TvbToVec(struct download_context *context, const u8 *image, u32 length);

// Plays the image in g_tvb_buffer, of `length` bytes: header, TAP reset, pre-scan, records. No
// byte past `length` is touched. `image` is not read. Returns 0 or the code of what failed: the
// header's or the interpreter's. Sets g_stop_code.
s32 Quorlan_HandleTvbContent(const u8 *image, u64 length);
}
