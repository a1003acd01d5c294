/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/* What the files of cpldjtag.ko share. */
#ifndef BOARD_CPLDJTAG_INTERNAL_H
#define BOARD_CPLDJTAG_INTERNAL_H

#include <linux/device.h>

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

/* ---- cpldjtag_pins.c */

/* Takes the lines of the module parameters from gpiolib. Returns 0 or a negative error code. */
int cpldjtag_pins_request(void);
void cpldjtag_pins_release(void);

/* The lines that were taken, the way to them, and a text "tck=N tms=N tdi=N tdo=N". */
extern struct cpldjtag_pins cpldjtag_pins;
extern const struct cpldjtag_pin_ops cpldjtag_pin_ops;
ssize_t cpldjtag_pins_show(char *page);

/* Forgets earlier errors of the lines; and the first error since then, 0 if there was none. */
void cpldjtag_pins_clear_error(void);
int cpldjtag_pins_error(void);

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
