/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/*
 * How a chain is described: the words, in two tables, and the text of a module parameter, which is
 * one grammar over them. Any other grammar goes by the same tables, so that a field or a fault has
 * one name, one default and one rule everywhere.
 *
 * A new fault is a kind in sim.h with what it does, its row in the table, and the code that acts it
 * out, which finds it in the chain's `faults`.
 */
#ifndef SIM_CONFIG_H
#define SIM_CONFIG_H

#include "sim.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- the fields of a device; struct sim_device_config says what they mean */

enum sim_field_number {
  SIM_FIELD_IDCODE,
  SIM_FIELD_INSTRUCTION,
  SIM_FIELD_IR,
  SIM_FIELD_BYPASS,
  SIM_FIELD_ROWS,
  SIM_FIELD_BITS,
  SIM_FIELD_ERASE,
  SIM_FIELD_PROGRAM,
  SIM_FIELD_BLANK,
  SIM_FIELD_COUNT
};

enum sim_field_place {
  SIM_IN_DEVICE,   /* the device's own; may be left out */
  SIM_IN_PART,     /* the part's; may be left out */
  SIM_SIZE_OF_PART /* the part's; every part has it */
};

enum sim_field_kind { SIM_NUMBER, SIM_FLAG };

struct sim_field {
  const char *name;
  enum sim_field_place place;
  enum sim_field_kind kind;
  sim_size offset;              /* of its value, a sim_u32, in struct sim_device_config */
  sim_u32 absent;               /* its value where it is left out */
  int (*allows)(sim_u32 value); /* whether it may be given that value; null: any */
  const char *wrong;            /* why a value is refused; null: none is */
  const char *advice;           /* the same in full, with what to do instead */
  enum sim_field_number needs;  /* the field that must be given with it; SIM_FIELD_COUNT: none */
  const char *lacking;          /* why it is refused without that or, in a part, without the part */
};

extern const struct sim_field sim_fields[SIM_FIELD_COUNT]; /* by enum sim_field_number */

/* The name of a part as a whole. */
#define SIM_PART_NAME "part"

/* Whether the instruction register of a device with an IDCODE holds the instruction that selects
 * it, and that is not BYPASS, all ones. And why another one is refused. */
int sim_instruction_fits(const struct sim_device_config *device);
extern const char *const sim_instruction_wrong;

/* Whether the instruction register of a device holds its code of BYPASS, if it has one, and that is
 * not the IDCODE's. And why another one is refused. */
int sim_bypass_fits(const struct sim_device_config *device);
extern const char *const sim_bypass_wrong;

/* Whether a device's part, if it has one, is no larger than can be simulated: rows times bits are
 * at most SIM_MAX_PART_BITS. And why another one is refused. */
#define SIM_MAX_PART_BITS 268435456
int sim_part_fits(const struct sim_device_config *device);
extern const char *const sim_part_too_large;

int sim_field_allows(const struct sim_field *field, sim_u32 value);
sim_u32 sim_field_value(const struct sim_field *field, const struct sim_device_config *device);
void sim_field_set(const struct sim_field *field, struct sim_device_config *device, sim_u32 value);

/* ---- the kinds of fault; enum sim_fault_kind says what they do */

/* What a number of a fault counts, and so which ones there can be. */
enum sim_fault_number {
  SIM_NO_NUMBER,
  SIM_SCAN_NUMBER,   /* a DR scan, from 1 */
  SIM_BIT_NUMBER,    /* a bit of a scan, from 0 */
  SIM_DEVICE_NUMBER, /* a device of the chain, from 1 */
  SIM_ROW_NUMBER,    /* a row, from 0, of the device that is named first */
  SIM_CLOCK_NUMBER,  /* a rising edge of TCK, from 1 */
  SIM_FAULT_NUMBER_COUNT
};

struct sim_fault_form {
  const char *name;
  enum sim_fault_number numbers[2]; /* `first` and `second` of struct sim_fault */
  enum sim_fault_kind excludes;     /* the kind that it replaces; its own or another */
};

extern const struct sim_fault_form sim_fault_forms[SIM_FAULT_KIND_COUNT]; /* by sim_fault_kind */

/* "scan", "bit", "device", "row" and "clock"; "" for SIM_NO_NUMBER. */
extern const char *const sim_fault_number_names[SIM_FAULT_NUMBER_COUNT];

/* The name of a kind of fault, "?" for none; and the kind of a name, or SIM_FAULT_KIND_COUNT. */
const char *sim_fault_name(enum sim_fault_kind kind);
enum sim_fault_kind sim_fault_kind_of(const char *name);

/* ---- as text
 *
 * A chain is its devices from the TDI end to the TDO end, separated by ';'; a device is its fields
 * in any order, separated by ','. A number is given as NAME=N, a flag by its name, the size of a
 * part as part=ROWSxBITS; a device without any field is "bypass". For example:
 *   idcode=0x0A014C35,part=64x128,erase=1000,program=50; bypass; idcode=0x13,instruction=224
 *
 * Faults are separated by ';' as well; one is its name with its numbers, if any: NAME, NAME=FIRST
 * or NAME=FIRST:SECOND. For example:
 *   tdo-stuck-0; missing=3; dead-row=2:7
 *
 * Blanks around names, numbers and signs are skipped. Numbers have 32 bits and are decimal, or
 * hexadecimal after 0x.
 */

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

/* Writes a fault as the text that sim_faults_parse reads, NUL-terminated and cut to `size` bytes.
 * Returns its whole length without the NUL. */
sim_size sim_fault_format(const struct sim_fault *fault, char *text, sim_size size);

#ifdef __cplusplus
}
#endif

#endif
