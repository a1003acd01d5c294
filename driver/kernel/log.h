// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the driver takes from the platform's log module.
#pragma once

#include "kernel/kernel.h"

// Module ids and levels of the driver's messages.
#define LOG_MODULE_LOAD 0       // load and unload
#define LOG_MODULE_DOWNLOAD 43  // everything in a download
#define LOG_ERROR 1             // argument errors, failures that end a load or a chip read
#define LOG_INFO 2              // all else

#ifdef __cplusplus
extern "C" {
#endif

// Writes one record of the log. `module` and `level` as above, `flag` is always 0; `format` and
// what follows are as for printk. The driver does not use the result.
__attribute__((format(printf, 4, 5))) int drv_log_record(u32 module, u32 level, u32 flag,
                                                         const char *format, ...);

// Returns a clock in milliseconds.
s64 log_get_timestamp_ms(void);

#ifdef __cplusplus
}
#endif
