// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Load and unload, and the driver's record with the framework.
#pragma once

#include "kernel/framework.h"

extern "C" {

// The operation table: slot 0 is TvbToVec, the others are null.
extern void *g_tvb_funcs[5];

// The record that the framework keeps while the module is loaded.
extern struct tvb_driver g_tvb_drv;

// Registers the driver and logs how that went and how long it took. Returns the framework's
// result; the kernel refuses the load when it is not 0.
s32 init_module(void);

// Unregisters the driver and frees what downloads have left behind.
void cleanup_module(void);
}
