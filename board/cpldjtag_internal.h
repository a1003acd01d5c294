/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/* What the files of cpldjtag.ko share. */
#ifndef BOARD_CPLDJTAG_INTERNAL_H
#define BOARD_CPLDJTAG_INTERNAL_H

#include <linux/device.h>
#include <linux/gpio/consumer.h>

#include "cpldjtag.h"

/* ---- cpldjtag_registry.c */

/*
 * Lends the driver that was registered first to a download; returns null if there is none. The
 * driver stays until it is given back. Only one may be lent at a time.
 */
struct cpldjtag_driver *cpldjtag_driver_lend(void);
void cpldjtag_driver_give_back(void);

/* Writes one line per driver, "NAME ID ID ID", to a buffer of a page. Returns the length. */
ssize_t cpldjtag_drivers_show(char *page);

/* ---- cpldjtag_main.c */

/*
 * Serves the chain of @dev: takes its lines and adds the attributes. One device can be served at a
 * time. Returns 0 or a negative error code, which has been reported unless it is -EPROBE_DEFER.
 */
int cpldjtag_start(struct device *dev);
void cpldjtag_stop(void *dev);

/* ---- cpldjtag_pins.c */

enum cpldjtag_signal { CPLDJTAG_TCK, CPLDJTAG_TMS, CPLDJTAG_TDI, CPLDJTAG_TDO, CPLDJTAG_SIGNALS };

/* "tck" and so on: the names of properties, of lookups and of parameters. */
extern const char *const cpldjtag_signal_names[CPLDJTAG_SIGNALS];

/*
 * Takes the lines from gpiolib: those that the module parameters number, or else those that belong
 * to @dev. Returns 0 or a negative error code, as cpldjtag_start().
 */
int cpldjtag_pins_request(struct device *dev);
void cpldjtag_pins_release(void);

/*
 * The lines that were taken, the way to them, and a text "tck=LINE tms=LINE tdi=LINE tdo=LINE". A
 * LINE is its number if the parameters have it, else CHIP:OFFSET.
 */
extern struct cpldjtag_pins cpldjtag_pins;
extern const struct cpldjtag_pin_ops cpldjtag_pin_ops;
ssize_t cpldjtag_pins_show(char *page);

/* Forgets earlier errors of the lines; and the first error since then, 0 if there was none. */
void cpldjtag_pins_clear_error(void);
int cpldjtag_pins_error(void);

/* ---- cpldjtag_numbers.c: lines by tck=, tms=, tdi= and tdo= */

/* Whether any of the parameters is given. */
bool cpldjtag_numbers_given(void);

/*
 * Takes a signal's line, in its direction and at its level at rest; @label is for gpiolib to show.
 * Sets @number and @desc, which gpiod_put() gives back. Returns 0 or a negative error code, which
 * has been reported.
 */
int cpldjtag_number_request(enum cpldjtag_signal signal, const char *label, u32 *number,
			    struct gpio_desc **desc);

/* ---- cpldjtag_lookup.c: lines by lines= */

/* The parameter, null if it is not given. */
const char *cpldjtag_lookup_text(void);

/* Tells gpiolib which lines belong to the device of that name. Returns 0 or -EINVAL or -ENOMEM. */
int cpldjtag_lookup_add(const char *device);
void cpldjtag_lookup_remove(void);

/* ---- cpldjtag_tree.c: lines by the device tree */

/* Whether the tree has a device for this module. */
bool cpldjtag_tree_has_device(void);

/* Serves the tree's device as soon as its lines are there. Returns 0 or a negative error code. */
int cpldjtag_tree_add(void);
void cpldjtag_tree_remove(void);

/* ---- cpldjtag_download.c */

/*
 * Downloads the file of that name, which the firmware loader finds on behalf of @dev. Returns 0
 * only if the driver completed the download; else a negative error code (see cpldjtag_main.c).
 */
int cpldjtag_download(struct device *dev, const char *name);

/* The texts of the attributes "result" and "state". Both return the length. */
ssize_t cpldjtag_result_show(char *page);
ssize_t cpldjtag_state_show(char *page);

#endif
