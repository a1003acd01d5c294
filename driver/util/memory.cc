// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "util/memory.h"

extern "C" {

u32 g_alloc_failures;

static u8 *counted(void *block) {
  if (!block)
    g_alloc_failures++;
  return static_cast<u8 *>(block);
}

u8 *m7_alloc_bytes(u64 size) {
  return counted(size > M7_ALLOC_MAX ? nullptr : __kmalloc(size, M7_GFP_KERNEL));
}

u8 *m7_alloc_zeroed_bytes(u64 size) {
  return counted(size > M7_ALLOC_MAX ? nullptr : __kmalloc(size, M7_GFP_KERNEL | M7_GFP_ZERO));
}

u8 *m7_realloc_bytes(u8 *block, u64 size) {
  return counted(size > M7_ALLOC_MAX ? nullptr : krealloc(block, size, M7_GFP_KERNEL));
}

void m7_free(const void *block) {
  if (block)
    kfree(block);
}
}
