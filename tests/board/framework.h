// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The framework's own sources on the host: its lines are those of a simulated chain, and its
// downloads are the driver's.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "sim/sim.h"

#ifdef __cplusplus
extern "C" {
#endif

// Takes the lines of the chain, which stays the caller's, and puts them into their directions. Goes
// from chain to chain. Returns 0 or a negative error code.
int framework_serve(struct sim_chain *chain);

// The module parameter of that name, which is on at first.
void framework_skip_same_level(bool skips);

// How often the framework has set a line in the last download, and how often of these to the level
// that it had. `signal` is "tck", "tms", "tdi" or "tdo".
struct framework_sets {
  unsigned long all;
  unsigned long repeated;
};
struct framework_sets framework_sets_of(const char *signal);

// Downloads an image as the framework does: returns the driver's result.
int32_t framework_download(const uint8_t *image, uint32_t length);

// Writes what the attribute of that name says to `page`, of 4096 bytes. Returns its length, or -1
// if there is no such attribute.
ptrdiff_t framework_attribute(const char *name, char *page);

#ifdef __cplusplus
}
#endif
