// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * One download: the file's image, the driver, the lines, and what came of it. One at a time: a
 * second one is refused, not queued.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/firmware.h>
#include <linux/kernel.h>
#include <linux/limits.h>
#include <linux/mm.h>
#include <linux/mutex.h>
#include <linux/string.h>
#include <linux/sysfs.h>

#include "cpldjtag_internal.h"

/* What a driver returns. */
#define DOWNLOAD_COMPLETED 1
#define DOWNLOAD_REFUSED (-2)

/* Held while a download runs; never waited for. */
static DEFINE_MUTEX(download_lock);

/* What "state" and "result" show: written under download_lock, read without. */
static bool running;
static bool has_result;
static s32 last_result;

/* A name that the firmware loader may look up: a relative path that stays below its folders. */
static bool is_usable_name(const char *name)
{
	return *name && *name != '/' && strlen(name) < NAME_MAX && !strstr(name, "..");
}

/* A copy of the file with one zero byte behind it, which a driver may look at. */
static int load_image(struct device *dev, const char *name, u8 **image, size_t *length)
{
	const struct firmware *file;
	int error;

	error = firmware_request_nowarn(&file, name, dev);
	if (error)
		return error;
	*length = file->size;
	if (file->size > U32_MAX)
		error = -EFBIG;
	else
		*image = kvmalloc(file->size + 1, GFP_KERNEL);
	if (!error && !*image)
		error = -ENOMEM;
	if (!error) {
		memcpy(*image, file->data, file->size);
		(*image)[file->size] = 0;
	}
	release_firmware(file);
	return error;
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

static int play(struct cpldjtag_driver *driver, const char *name, const u8 *image, u32 length)
{
	int error;

	cpldjtag_pins_clear_error();
	last_result = call_driver(driver, name, image, length);
	WRITE_ONCE(has_result, true);
	error = cpldjtag_pins_error();
	if (error)
		pr_err("%s: a line could not be used: error %d\n", name, error);
	if (last_result == DOWNLOAD_REFUSED)
		return -EINVAL;
	return last_result == DOWNLOAD_COMPLETED && !error ? 0 : -EIO;
}

/* With download_lock held. */
static int run(struct device *dev, const char *name)
{
	struct cpldjtag_driver *driver;
	u8 *image = NULL;
	size_t length;
	int error;

	driver = cpldjtag_driver_lend();
	if (!driver)
		return -ENODEV;
	error = load_image(dev, name, &image, &length);
	if (!error)
		error = play(driver, name, image, length);
	cpldjtag_driver_give_back();
	kvfree(image);
	return error;
}

int cpldjtag_download(struct device *dev, const char *name)
{
	int error;

	if (!is_usable_name(name))
		return -EINVAL;
	if (!mutex_trylock(&download_lock))
		return -EBUSY;
	WRITE_ONCE(has_result, false);
	WRITE_ONCE(running, true);
	error = run(dev, name);
	WRITE_ONCE(running, false);
	mutex_unlock(&download_lock);
	return error;
}

ssize_t cpldjtag_result_show(char *page)
{
	if (!READ_ONCE(has_result))
		return sysfs_emit(page, "none\n");
	return sysfs_emit(page, "%d\n", READ_ONCE(last_result));
}

ssize_t cpldjtag_state_show(char *page)
{
	return sysfs_emit(page, "%s\n", READ_ONCE(running) ? "running" : "idle");
}
