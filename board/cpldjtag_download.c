// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * One download: the image, the driver, the lines, and what came of it. One at a time: a second one
 * is refused, not queued.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/firmware.h>
#include <linux/kernel.h>
#include <linux/limits.h>
#include <linux/mm.h>
#include <linux/module.h>
#include <linux/string.h>
#include <linux/workqueue.h>

#include "cpldjtag_internal.h"
#include "cpldjtag_seal.h"

/* What a driver returns. */
#define DOWNLOAD_COMPLETED 1
#define DOWNLOAD_FAILED 0
#define DOWNLOAD_REFUSED (-2)

static bool require_seal;
module_param(require_seal, bool, 0644);
MODULE_PARM_DESC(require_seal, "refuse files without a seal");

/* A name that the firmware loader may look up: a relative path that stays below its folders. */
static bool is_usable_name(const char *name)
{
	return cpldjtag_status_is_name(name) && *name != '/' && strlen(name) < NAME_MAX &&
	       !strstr(name, "..");
}

u8 *cpldjtag_image_alloc(size_t length)
{
	u8 *image = length <= CPLDJTAG_IMAGE_MAX ? kvmalloc(length + 1, GFP_KERNEL) : NULL;

	if (image)
		image[length] = 0;
	return image;
}

static int load_image(struct device *dev, const char *name, u8 **image, size_t *length)
{
	const struct firmware *file;
	int error;

	error = firmware_request_nowarn(&file, name, dev);
	/* That error is the seal's. */
	if (error)
		return error == -EBADMSG ? -EIO : error;
	*length = file->size;
	*image = cpldjtag_image_alloc(file->size);
	if (*image)
		memcpy(*image, file->data, file->size);
	else
		error = file->size > CPLDJTAG_IMAGE_MAX ? -EFBIG : -ENOMEM;
	release_firmware(file);
	return error;
}

/* Nothing has been driven yet. */
static int check_seal(const char *name, const u8 *image, size_t length)
{
	const u32 crc = cpldjtag_image_crc(image, length);
	const enum cpldjtag_seal seal = cpldjtag_image_seal(image, length, crc);

	cpldjtag_status_image(crc);
	if (seal == CPLDJTAG_SEAL_BROKEN) {
		pr_err("%s: not played, for its seal is not that of its content: the file is "
		       "damaged\n",
		       name);
		return -EBADMSG;
	}
	if (seal == CPLDJTAG_UNSEALED && require_seal) {
		pr_err("%s: not played, for it has no seal, and require_seal is set\n", name);
		return -EBADMSG;
	}
	return 0;
}

static s32 call_driver(struct cpldjtag_driver *driver, const char *name, const u8 *image,
		       u32 length)
{
	struct download_context context = {
		.file = name,
		.driver = driver->name,
		.pins = &cpldjtag_pins,
		.pin_ops = &cpldjtag_pin_ops,
	};

	return driver->ops->download(&context, image, length);
}

/*
 * A driver may think that it has completed a download whose end was not played, a line of which
 * failed, or whose last record has the comparison that failed.
 */
static int outcome(s32 *result)
{
	int error = cpldjtag_pins_stopped();

	if (!error && (cpldjtag_pins_error() || cpldjtag_pins_ended_reading()))
		error = -EIO;
	if (error) {
		*result = DOWNLOAD_FAILED;
		return error;
	}
	if (*result == DOWNLOAD_REFUSED)
		return -EINVAL;
	return *result == DOWNLOAD_COMPLETED ? 0 : -EIO;
}

static int play(struct cpldjtag_driver *driver, const char *name, const u8 *image, u32 length)
{
	s32 result;
	int error;

	cpldjtag_status_running();
	result = call_driver(driver, name, image, length);
	error = outcome(&result);
	cpldjtag_status_played(result);
	return error;
}

static int check_and_play(struct cpldjtag_driver *driver, const char *name, const u8 *image,
			  size_t length)
{
	int error;

	error = check_seal(name, image, length);
	if (!error)
		error = cpldjtag_pins_stop_requested();
	return error ?: play(driver, name, image, length);
}

static int load_and_play(struct device *dev, struct cpldjtag_driver *driver, const char *name)
{
	u8 *image = NULL;
	size_t length;
	int error;

	error = load_image(dev, name, &image, &length);
	if (!error)
		error = check_and_play(driver, name, image, length);
	kvfree(image);
	return error;
}

/* @image is null where the file has to be loaded. */
static int download(struct device *dev, const char *name, const u8 *image, size_t length)
{
	struct cpldjtag_driver *driver = cpldjtag_driver_lend();
	int error;

	if (!driver)
		error = -ENODEV;
	else if (image)
		error = check_and_play(driver, name, image, length);
	else
		error = load_and_play(dev, driver, name);
	if (driver)
		cpldjtag_driver_give_back();
	cpldjtag_status_end(error);
	return error;
}

struct workqueue_struct *cpldjtag_download_queue(void)
{
	return alloc_workqueue(KBUILD_MODNAME, WQ_UNBOUND | WQ_FREEZABLE, 1);
}

int cpldjtag_download_begin(struct device *dev)
{
	return cpldjtag_status_begin(dev, NULL);
}

int cpldjtag_download_image(struct device *dev, const u8 *image, size_t length)
{
	return download(dev, cpldjtag_status_file(), image, length);
}

int cpldjtag_download_file(struct device *dev, const char *name)
{
	int error;

	if (!is_usable_name(name))
		return -EINVAL;
	error = cpldjtag_status_begin(dev, name);
	return error ?: download(dev, name, NULL, 0);
}
