/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/*
 * The JTAG download framework: it owns the board's four JTAG lines and lends them to the drivers
 * that register with it, one download at a time.
 *
 * The records below are binary interfaces between modules that are built apart: little-endian,
 * 8-byte pointers, offsets as noted. cpldjtag_main.c asserts them.
 */
#ifndef BOARD_CPLDJTAG_H
#define BOARD_CPLDJTAG_H

#include <linux/list.h>
#include <linux/types.h>

/**
 * struct cpldjtag_pins - the number by which each line is called in struct cpldjtag_pin_ops; a
 * driver reads nothing else from it
 * @reserved: zero
 * @tdi: at byte 24
 * @tms: at byte 28
 * @tdo: at byte 32
 * @tck: at byte 36
 */
struct cpldjtag_pins {
	u64 reserved[3];
	u32 tdi;
	u32 tms;
	u32 tdo;
	u32 tck;
};

/**
 * struct cpldjtag_pin_ops - a driver's way to the lines; @gpio is a number of struct cpldjtag_pins
 * @reserved: slots 0 and 1, null
 * @drive_high: slot 2, returns 0 or a negative error code
 * @drive_low: slot 3, the same
 * @read: slot 4, returns exactly 0 for low and 1 for high
 *
 * All may sleep. They are for the thread of the download only, and only while it lasts.
 */
struct cpldjtag_pin_ops {
	int (*reserved[2])(u32 gpio);
	int (*drive_high)(u32 gpio);
	int (*drive_low)(u32 gpio);
	int (*read)(u32 gpio);
};

#ifdef __GENKSYMS__
#define download_context cpldjtag_context /* see struct cpldjtag_ops */
#endif

/**
 * struct download_context - one download, as the driver gets it; the driver only reads it
 * @file: name of the file that is being downloaded
 * @driver: name of the driver
 * @pins: at byte 16, the lines
 * @reserved: zero
 * @pin_ops: at byte 128, the way to the lines
 */
struct download_context {
	const char *file;
	const char *driver;
	const struct cpldjtag_pins *pins;
	u64 reserved[13];
	const struct cpldjtag_pin_ops *pin_ops;
};

/**
 * struct cpldjtag_ops - what a driver can do
 * @download: slot 0; plays @image, of @length bytes. One byte past the image may be read, not more.
 *            The image is the framework's and is not changed. Returns 1 when the download was
 *            completed, 0 when it failed and -2 when the arguments cannot be used.
 * @reserved: slots 1 to 4, null
 *
 * The type of @download is to the letter that of a driver's function, tag and all: a kernel with
 * kCFI holds them against each other at the call. The versions of the exported symbols are still
 * made from the first release's, so that modules built for it load beside these.
 */
struct cpldjtag_ops {
#ifdef __GENKSYMS__
	s32 (*download)(const struct cpldjtag_context *context, const u8 *image, u32 length);
#else
	s32 (*download)(struct download_context *context, const u8 *image, u32 length);
#endif
	void *reserved[4];
};

/**
 * struct cpldjtag_driver - a driver's record, 80 bytes in the driver's own memory
 * @link: the framework's, zero while the driver is not registered
 * @name: names the driver, no other one registered has the same
 * @ops: what it can do
 * @ids: which chips it serves, in the board makers' numbers; shown, not interpreted
 * @reserved: zero
 */
struct cpldjtag_driver {
	struct list_head link;
	const char *name;
	const struct cpldjtag_ops *ops;
	u32 ids[3];
	u8 reserved[36];
};

/**
 * cpldjtag_driver_register() - make a driver known
 * @driver: its record, which stays the driver's and must outlive the registration
 *
 * May sleep.
 *
 * Return: 0; -EINVAL for a record without name or download operation; -EEXIST if its name is
 * registered already.
 */
s32 cpldjtag_driver_register(struct cpldjtag_driver *driver);

/**
 * cpldjtag_driver_unregister() - take a driver away
 * @name: its name
 *
 * No new download reaches the driver from here on; one that it is playing is waited for, however
 * long it takes. So a driver may go as soon as this returns. A name that is not registered is
 * reported in the kernel log and otherwise ignored. Must not be called from a download.
 */
void cpldjtag_driver_unregister(const char *name);

#endif
