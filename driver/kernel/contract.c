// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The only file that sees the kernel's headers. It gives the module its information block and
// proves at compile time that kernel.h and framework.h declare what the kernel has: a different
// prototype is a conflicting declaration, a different value or offset fails its assertion.
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

s64 *m7_file_pos(struct file *file) {
  return &file->f_pos;
}
