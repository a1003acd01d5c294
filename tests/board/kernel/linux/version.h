// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The first kernel that the framework is for.
#pragma once

#define KERNEL_VERSION(a, b, c) (((a) << 16) + ((b) << 8) + (c))
#define LINUX_VERSION_CODE KERNEL_VERSION(5, 10, 0)
