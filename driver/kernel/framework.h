// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the driver shares with the framework module `cpldjtag`: records that pass between two
// separately built modules. Their layout is fixed: little-endian, with 8-byte pointers. contract.c
// asserts every offset that the driver relies on.
#pragma once

#include "kernel/kernel.h"

#ifdef __cplusplus
extern "C" {
#endif

// A driver as the framework registers it: 80 bytes, in the driver's memory, writable.
struct tvb_driver {
  u64 framework[2];  // the framework's bookkeeping; never touched by the driver
  const char *name;  // names the driver; the key by which it is unregistered
  void *const *ops;  // five operations; slot 0 is the download, the others are null
  u32 values[3];     // their meaning is the framework's
  u8 reserved[36];   // zero
};

// The GPIO line of each JTAG signal. More fields of the framework may follow.
struct pin_config {
  u8 framework[24];
  u32 tdi;
  u32 tms;
  u32 tdo;
  u32 tck;
};

// The framework's operations on a GPIO line; `gpio` is a line number of pin_config.
struct pin_operations {
  void *framework[2];
  int (*drive_high)(u32 gpio);  // result ignored
  int (*drive_low)(u32 gpio);   // result ignored
  int (*read)(u32 gpio);        // exactly 0 for low, 1 for high
};

// One download as the framework hands it over; the driver reads these two fields only.
struct download_context {
  u8 framework_0[16];
  const struct pin_config *pins;
  u8 framework_24[104];
  const struct pin_operations *operations;
};

// Registers a driver; the framework keeps the address. Returns 0, or a negative error code.
s32 cpldjtag_driver_register(struct tvb_driver *driver);

// Removes the driver that was registered under `name`.
void cpldjtag_driver_unregister(const char *name);

#ifdef __cplusplus
}
#endif
