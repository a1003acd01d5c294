// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The one way to the kernel's allocator. A command file says how large a buffer must be, and may
// say anything: a size that the kernel cannot give is refused here and never asked for.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Refusals since load, by the kernel or by size. 0 at load. A caller that compares it before and
// after an operation learns whether memory was wanting in it.
extern u32 g_alloc_failures;

// Returns a new block of `size` bytes, not zeroed, or null. The caller frees it with kfree.
u8 *m7_alloc_bytes(u64 size);

// The same, zeroed.
u8 *m7_alloc_zeroed_bytes(u64 size);

// Resizes `block` to `size` bytes; what it gains is not zeroed. Null leaves `block` as it was.
u8 *m7_realloc_bytes(u8 *block, u64 size);

// Frees `block`. The kernel is not asked to free null.
void m7_free(const void *block);
}
