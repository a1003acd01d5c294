// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the driver takes from the kernel: the fixed-width types and every function and table that
// it may call. The kernel's own headers are C only, so these are declarations of our own;
// contract.c, which sees both, holds them to the kernel's at compile time.
#pragma once

#ifdef __cplusplus
typedef __UINT8_TYPE__ u8;
typedef __INT16_TYPE__ s16;
typedef __UINT32_TYPE__ u32;
typedef __INT32_TYPE__ s32;
typedef __UINT64_TYPE__ u64;
typedef __INT64_TYPE__ s64;
#if __STDC_HOSTED__
#include <string.h>
#include <sys/types.h>
#else
typedef __SIZE_TYPE__ size_t;
typedef __PTRDIFF_TYPE__ ssize_t;
#endif

extern "C" {
#endif

struct file;

// Kernels after 5.10 have macros in place of some of the functions below, or other names for them.
// There contract.c has a function of our own for each, and the driver calls that one
// (M7_KERNEL_BY_CONTRACT, from Kbuild); what is declared is the same.
#ifdef M7_KERNEL_BY_CONTRACT
#define M7_KERNEL(name) m7_kernel_##name
#else
#define M7_KERNEL(name) name
#endif

// Allocation flags: may sleep; may sleep and gives zeroed memory.
#define M7_GFP_KERNEL 0xCC0u
#define M7_GFP_ZERO 0x100u

// The largest block that __kmalloc allocates, with the smallest pages. The kernel does not only
// refuse a larger request: it reports a bug of the caller.
#define M7_ALLOC_MAX (4u << 20)

// Marks an upper-case letter (Latin-1 included) in an entry of _ctype.
#define M7_CTYPE_UPPER 0x01u

// The argument of __const_udelay that waits 100 microseconds.
#define M7_UDELAY_100_US 429500ul

// The kernel's character classes, one entry a byte value.
extern const unsigned char _ctype[];

// Allocates `size` bytes under M7_GFP_… flags. Null when out of memory. The caller frees the block
// with kfree.
void *M7_KERNEL(__kmalloc)(size_t size, u32 flags);

// Resizes `block` to `size` bytes and keeps its content; added bytes are uninitialised. The block
// may move, so use only the result from then on. Null when out of memory: `block` is unchanged.
void *M7_KERNEL(krealloc)(const void *block, size_t size, u32 flags);

// Frees a block; null is allowed.
void M7_KERNEL(kfree)(const void *block);

// Writes to the kernel log. The driver's messages carry no level prefix.
__attribute__((format(printf, 1, 2))) int M7_KERNEL(printk)(const char *format, ...);

// Waits busily, without sleeping: M7_UDELAY_100_US for 100 microseconds.
void M7_KERNEL(__const_udelay)(unsigned long loops);

// A clock in nanoseconds that never sleeps.
unsigned long long M7_KERNEL(sched_clock)(void);

// Reads up to `count` bytes of an open file at `*position` and advances it. Returns the number
// of bytes read, 0 at the end of the file, a negative error code otherwise.
ssize_t M7_KERNEL(kernel_read)(struct file *file, void *buffer, size_t count, s64 *position);

// Returns the address of an open file's own position (contract.c; the record is the kernel's).
s64 *m7_file_pos(struct file *file);

#if defined(M7_KERNEL_BY_CONTRACT) || (defined(__cplusplus) && !__STDC_HOSTED__)
size_t M7_KERNEL(strlen)(const char *text);
#endif
#if defined(__cplusplus) && !__STDC_HOSTED__
char *strcat(char *to, const char *from);
void *memcpy(void *to, const void *from, size_t count);
void *memset(void *to, int byte, size_t count);
#endif

#ifdef M7_KERNEL_BY_CONTRACT
// Load and unload, which such a kernel knows by macros of its headers; see module/module.h.
s32 M7_KERNEL(init_module)(void);
void M7_KERNEL(cleanup_module)(void);
#endif

#ifdef __cplusplus
}
#if defined(M7_KERNEL_BY_CONTRACT)
#define init_module M7_KERNEL(init_module)
#define cleanup_module M7_KERNEL(cleanup_module)
#define __kmalloc M7_KERNEL(__kmalloc)
#define krealloc M7_KERNEL(krealloc)
#define kfree M7_KERNEL(kfree)
#define printk M7_KERNEL(printk)
#define __const_udelay M7_KERNEL(__const_udelay)
#define sched_clock M7_KERNEL(sched_clock)
#define kernel_read M7_KERNEL(kernel_read)
#define strlen M7_KERNEL(strlen)
#endif
#endif
