// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The framework's own sources on the host: its lines are those of a simulated chain, and its
// downloads are the driver's.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "sim/sim.h"

#ifdef __cplusplus
extern "C" {
#endif

// Takes the lines of the chain, which stays the caller's, and puts them into their directions. Goes
// from chain to chain. Returns 0 or a negative error code.
int framework_serve(struct sim_chain *chain);

// Downloads an image as the framework does: returns the driver's result.
int32_t framework_download(const uint8_t *image, uint32_t length);

// Writes what the attribute of that name says to `page`, of 4096 bytes. Returns its length, or -1
// if there is no such attribute.
ptrdiff_t framework_attribute(const char *name, char *page);

#ifdef __cplusplus
}
#endif
