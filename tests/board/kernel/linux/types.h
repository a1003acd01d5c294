// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel's own names of its types.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <sys/types.h>

// The system has such a header too, for other types.
#include_next <linux/types.h>

typedef __u8 u8;
typedef __s32 s32;
typedef __u32 u32;
#ifndef __cplusplus
typedef __u64 u64;  // in C++ there is the driver's
#endif
