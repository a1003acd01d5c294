// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The only way to the kernel's allocator. A command file says how large a buffer must be, and may
// say anything: a size that the kernel cannot allocate is refused here, without asking the kernel.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Failed allocations since load, those refused for their size included. 0 at load. Compare it
// before and after an operation to learn whether one failed in between.
extern u32 g_alloc_failures;

// Returns a new block of `size` bytes, not zeroed, or null. The caller frees it with kfree.
u8 *m7_alloc_bytes(u64 size);

// The same, zeroed.
u8 *m7_alloc_zeroed_bytes(u64 size);

// Resizes `block` to `size` bytes; added bytes are not zeroed. Null leaves `block` unchanged.
u8 *m7_realloc_bytes(u8 *block, u64 size);

// Frees `block` unless it is null.
void m7_free(const void *block);
}
