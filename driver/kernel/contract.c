// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The only file that sees the kernel's headers. It gives the module its information block and
// proves at compile time that kernel.h and framework.h declare what the kernel has: a different
// prototype is a conflicting declaration, a different value or offset fails its assertion. On
// kernels after 5.10 it also has the functions of kernel.h that are not plain functions there.
#include <linux/build_bug.h>
#include <linux/ctype.h>
#include <linux/delay.h>
#include <linux/fs.h>
#include <linux/gfp.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/sched/clock.h>
#include <linux/slab.h>
#include <linux/stddef.h>
#include <linux/string.h>

#include "kernel/framework.h"
#include "kernel/kernel.h"
#include "kernel/log.h"

MODULE_LICENSE("Dual BSD/GPL");
MODULE_VERSION("v6.2");
MODULE_DESCRIPTION("Programs a CPLD or FPGA over JTAG from a TVB command file");

static_assert(M7_GFP_KERNEL == (__force u32)GFP_KERNEL);
static_assert(M7_GFP_ZERO == (__force u32)__GFP_ZERO);
static_assert(M7_ALLOC_MAX <= KMALLOC_MAX_SIZE);
static_assert(M7_CTYPE_UPPER == _U);
// __const_udelay takes microseconds times 2^32 / 10^6; the kernel rounds that factor up to 4295.
static_assert(M7_UDELAY_100_US == 100 * 0x10C7UL);

static_assert(sizeof(struct tvb_driver) == 80);
static_assert(offsetof(struct tvb_driver, name) == 16);
static_assert(offsetof(struct tvb_driver, ops) == 24);
static_assert(offsetof(struct tvb_driver, values) == 32);
static_assert(offsetof(struct tvb_driver, reserved) == 44);

static_assert(offsetof(struct pin_config, tdi) == 24);
static_assert(offsetof(struct pin_config, tms) == 28);
static_assert(offsetof(struct pin_config, tdo) == 32);
static_assert(offsetof(struct pin_config, tck) == 36);

static_assert(offsetof(struct pin_operations, drive_high) == 2 * sizeof(void *));
static_assert(offsetof(struct pin_operations, drive_low) == 3 * sizeof(void *));
static_assert(offsetof(struct pin_operations, read) == 4 * sizeof(void *));

static_assert(offsetof(struct download_context, pins) == 16);
static_assert(offsetof(struct download_context, operations) == 128);

static_assert(sizeof(loff_t) == sizeof(s64));

#ifdef M7_KERNEL_BY_CONTRACT

static int __init load(void) {
  return m7_kernel_init_module();
}
module_init(load);

static void __exit unload(void) {
  m7_kernel_cleanup_module();
}
module_exit(unload);

void *m7_kernel___kmalloc(size_t size, u32 flags) {
  return kmalloc(size, (__force gfp_t)flags);
}

void *m7_kernel_krealloc(const void *block, size_t size, u32 flags) {
  return krealloc(block, size, (__force gfp_t)flags);
}

void m7_kernel_kfree(const void *block) {
  kfree(block);
}

int m7_kernel_printk(const char *format, ...) {
  va_list arguments;
  int written;

  va_start(arguments, format);
  written = vprintk(format, arguments);
  va_end(arguments);
  return written;
}

void m7_kernel___const_udelay(unsigned long loops) {
  __const_udelay(loops);
}

unsigned long long m7_kernel_sched_clock(void) {
  return sched_clock();
}

ssize_t m7_kernel_kernel_read(struct file *file, void *buffer, size_t count, s64 *position) {
  return kernel_read(file, buffer, count, position);
}

size_t m7_kernel_strlen(const char *text) {
  return strlen(text);
}

#endif

s64 *m7_file_pos(struct file *file) {
  return &file->f_pos;
}
