/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/*
 * Chains and faults as text, for a module parameter or a command line.
 *
 * A chain is its devices from the TDI end to the TDO end, separated by ';'; a device is its fields,
 * separated by ','. Blanks around names, numbers and signs are skipped. Numbers are decimal, or
 * hexadecimal after 0x.
 *   bypass            a device with BYPASS alone (stands by itself)
 *   idcode=N          its IDCODE, not 0
 *   instruction=N     the instruction that selects it, 6 (the default) or 224
 *   part=ROWSxBITS    a programmable part of that many rows of that many bits
 *   erase=N           TCK in Run-Test/Idle that an erase needs (default 100)
 *   program=N         the same for a row (default 20)
 *   blank             the memory is erased at first
 * The last three need part=. For example:
 *   idcode=0x0A014C35,part=64x128,erase=1000,program=50; bypass; idcode=0x13,instruction=224
 *
 * Faults are separated by ';' as well:
 *   tdo-stuck-0   tdo-stuck-1   flip=SCAN:BIT   dead-row=DEVICE:ROW   missing=DEVICE
 */
#ifndef SIM_CONFIG_H
#define SIM_CONFIG_H

#include "sim.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Where a text is wrong: the offset in characters from 0, and why, as a constant string. */
struct sim_text_error {
  sim_size position;
  const char *reason;
};

/* Reads a chain. Up to `capacity` devices are stored in the caller's array (null with capacity 0 to
 * count only); *count becomes the number in the text, also where it is larger. Returns 0, or -1
 * with *error filled and *count untouched. */
int sim_config_parse(const char *text, struct sim_device_config *devices, sim_u32 capacity,
                     sim_u32 *count, struct sim_text_error *error);

/* Reads a list of faults in the same way; an empty text is a list of none. Whether the devices and
 * rows exist is for sim_chain_set_fault to say. */
int sim_faults_parse(const char *text, struct sim_fault *faults, sim_u32 capacity, sim_u32 *count,
                     struct sim_text_error *error);

/* The name of a kind of fault as in the text, "?" for none; and the kind of a name, or
 * SIM_FAULT_KIND_COUNT. */
const char *sim_fault_name(enum sim_fault_kind kind);
enum sim_fault_kind sim_fault_kind_of(const char *name);

/* Writes a fault as the text that sim_faults_parse reads, NUL-terminated and cut to `size` bytes.
 * Returns its whole length without the NUL. */
sim_size sim_fault_format(const struct sim_fault *fault, char *text, sim_size size);

#ifdef __cplusplus
}
#endif

#endif
