/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/* What the files of cpldjtag.ko share. */
#ifndef BOARD_CPLDJTAG_INTERNAL_H
#define BOARD_CPLDJTAG_INTERNAL_H

#include <linux/device.h>
#include <linux/gpio/consumer.h>
#include <linux/limits.h>
#include <linux/sysfs.h>

#include "cpldjtag.h"

struct workqueue_struct;

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
 * Serves the chain of @dev, whose driver is probing it, until that leaves it: takes its lines and
 * adds the attributes. One device can be served at a time. Returns 0 or a negative error code,
 * which has been reported unless it is -EPROBE_DEFER.
 */
int cpldjtag_start(struct device *dev);

/* ---- cpldjtag_lines.c */

enum cpldjtag_signal { CPLDJTAG_TCK, CPLDJTAG_TMS, CPLDJTAG_TDI, CPLDJTAG_TDO, CPLDJTAG_SIGNALS };

/* "tck" and so on: the names of properties, of lookups and of parameters. */
extern const char *const cpldjtag_signal_names[CPLDJTAG_SIGNALS];

/*
 * Takes the lines from gpiolib: those that the module parameters number, or else those that belong
 * to @dev. Returns 0 or a negative error code, as cpldjtag_start().
 */
int cpldjtag_lines_request(struct device *dev);
void cpldjtag_lines_release(void);

/* How a line is set and read: in the way that costs least. */
enum cpldjtag_way {
	CPLDJTAG_BY_CHIP, /* by its chip, which does not sleep and is held, and has the line's level
			   */
	CPLDJTAG_RAW,	  /* by gpiolib, which does as much */
	CPLDJTAG_BY_FLAGS, /* by gpiolib, which makes of it what the line's flags say */
	CPLDJTAG_SLEEPING, /* the same, of a chip that may sleep */
};

/* Those that were taken. */
extern struct cpldjtag_line {
	struct gpio_desc *desc;
	struct gpio_chip *chip;
	unsigned int offset; /* in the chip */
	enum cpldjtag_way way;
} cpldjtag_lines[CPLDJTAG_SIGNALS];

/*
 * Writes "tck=LINE tms=LINE tdi=LINE tdo=LINE" to a buffer of a page, and returns its length. A
 * LINE is its number if the parameters have it, else CHIP:OFFSET.
 */
ssize_t cpldjtag_lines_show(char *page);

/* ---- cpldjtag_pins.c */

/* The lines and the way to them, as a driver has them. */
extern struct cpldjtag_pins cpldjtag_pins;
extern const struct cpldjtag_pin_ops cpldjtag_pin_ops;

/* What a download has done so far. A clock is a rising edge of TCK, and the first one is 0. */
struct cpldjtag_progress {
	u64 clocks;	/* how many there have been */
	u64 reads;	/* of TDO */
	u64 read_clock; /* where the last read was: in the period whose edge would be this one */
	u32 read_level; /* and what it gave */
	int error;	/* the first of a line, 0 if there was none */
	u64 error_clock;
};

/* A download begins: nothing has been done, no line has failed. Does not sleep. */
void cpldjtag_pins_begin(void);
struct cpldjtag_progress cpldjtag_pins_progress(void);

/* The first error of a line, 0 if there was none; and whether it ended reading TDO. */
int cpldjtag_pins_error(void);
bool cpldjtag_pins_ended_reading(void);

/*
 * Makes the download stop: from now on, or from when the driver has read the IDCODE, no line moves,
 * and the driver's next comparison fails. @why is a negative error code; the first one counts. May
 * be called by anybody.
 */
void cpldjtag_pins_stop(int why);

/* Why the download is to stop, 0 if it is not; and the same once that has kept a line still. */
int cpldjtag_pins_stop_requested(void);
int cpldjtag_pins_stopped(void);

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

/* ---- cpldjtag_status.c: what the attributes, the log and an event tell of a download */

enum cpldjtag_state { CPLDJTAG_IDLE, CPLDJTAG_LOADING, CPLDJTAG_RUNNING };

/* Whether the log and an event can tell of a file by that name: it is a line, and not empty. */
bool cpldjtag_status_is_name(const char *text);

/*
 * The steps of a download, called by its thread in this order; those in the middle may be missing.
 * @file is null for an image, which has the name that was written for it. begin() returns -EBUSY
 * while another runs; only after a 0 the others may follow, and end() must.
 */
int cpldjtag_status_begin(struct device *dev, const char *file);
void cpldjtag_status_image(u32 crc);
void cpldjtag_status_running(void);
void cpldjtag_status_played(s32 result);
void cpldjtag_status_end(int error);

/* The name of the download that runs. The text is good until that ends. */
const char *cpldjtag_status_file(void);

/* Cancels the download that runs. Returns -ENODEV if none does. */
int cpldjtag_status_cancel(void);

enum cpldjtag_state cpldjtag_status_state(void);
extern const struct attribute_group cpldjtag_status_group;

/* ---- cpldjtag_download.c */

/*
 * Downloads the file of that name, which the firmware loader finds on behalf of @dev. Returns 0
 * only if the driver completed the download; else a negative error code, that of the attribute
 * "download".
 */
int cpldjtag_download_file(struct device *dev, const char *name);

/*
 * The same for an image, in two steps: begin() returns -EBUSY while a download runs; after a 0,
 * image() has to follow, in any thread. The image comes from alloc(): @length bytes and behind them
 * a zero byte, which a driver may look at; kvfree() frees it.
 */
int cpldjtag_download_begin(struct device *dev);
int cpldjtag_download_image(struct device *dev, const u8 *image, size_t length);
u8 *cpldjtag_image_alloc(size_t length);

/*
 * Makes a queue for such downloads, null if there is no memory. The system is not suspended while
 * one of its works runs, as it is not while a download has a writer that waits for it.
 */
struct workqueue_struct *cpldjtag_download_queue(void);

/* The largest: kvmalloc() takes more for a mistake of its caller. */
#define CPLDJTAG_IMAGE_MAX ((size_t)INT_MAX - 1)

/* ---- cpldjtag_data.c, cpldjtag_upload.c: downloads of an image that is written to the kernel */

int cpldjtag_upload_add(struct device *dev);
void cpldjtag_upload_remove(struct device *dev);

#endif
