// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * cpldjtag.ko: the JTAG download framework.
 *
 * Module parameters tck=, tms=, tdi= and tdo= say which GPIO lines the chain is on. Attributes, in
 * /sys/devices/platform/cpldjtag:
 *   download  write the name of a file below /lib/firmware: the download runs until the write
 *             returns. The write fails with
 *               EIO     the download failed: "result" and the log say more
 *               EINVAL  the name is not usable, or the driver refused the arguments
 *               ENOENT  there is no such file
 *               EBUSY   a download is running (the write does not wait for it)
 *               ENODEV  no driver is registered
 *             and with any other error of the firmware loader or of an allocation
 *   result    what the driver returned for the last download: 1 completed, 0 failed, -2 arguments
 *             refused; "none" if it was not called or has not returned yet
 *   state     "idle" or "running"
 *   drivers   the registered drivers, one per line: name and three numbers
 *   pins      the lines: "tck=N tms=N tdi=N tdo=N"
 *
 * A download cannot be stopped. Unloading its driver waits until it ends; this module cannot be
 * unloaded while a driver is loaded, nor the lines' module while this one is.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/build_bug.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/slab.h>
#include <linux/stddef.h>
#include <linux/string.h>
#include <linux/sysfs.h>

#include "cpldjtag_internal.h"

static_assert(sizeof(struct cpldjtag_driver) == 80);
static_assert(offsetof(struct cpldjtag_driver, name) == 16);
static_assert(offsetof(struct cpldjtag_driver, ops) == 24);
static_assert(offsetof(struct cpldjtag_driver, ids) == 32);
static_assert(offsetof(struct cpldjtag_context, pins) == 16);
static_assert(offsetof(struct cpldjtag_context, pin_ops) == 128);
static_assert(offsetof(struct cpldjtag_pins, tdi) == 24);
static_assert(offsetof(struct cpldjtag_pins, tms) == 28);
static_assert(offsetof(struct cpldjtag_pins, tdo) == 32);
static_assert(offsetof(struct cpldjtag_pins, tck) == 36);
static_assert(offsetof(struct cpldjtag_pin_ops, drive_high) == 16);
static_assert(offsetof(struct cpldjtag_pin_ops, drive_low) == 24);
static_assert(offsetof(struct cpldjtag_pin_ops, read) == 32);
static_assert(sizeof(struct cpldjtag_ops) == 40);

static struct platform_device *device;

static ssize_t download_store(struct device *dev, struct device_attribute *attr, const char *buf,
			      size_t count)
{
	char *name;
	int error;

	name = kstrndup(buf, count, GFP_KERNEL);
	if (!name)
		return -ENOMEM;
	/* A name with a zero byte in it is not usable. */
	error = strlen(name) == count ? cpldjtag_download(dev, strim(name)) : -EINVAL;
	kfree(name);
	return error ? error : count;
}
static DEVICE_ATTR_WO(download);

static ssize_t result_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return cpldjtag_result_show(buf);
}
static DEVICE_ATTR_RO(result);

static ssize_t state_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return cpldjtag_state_show(buf);
}
static DEVICE_ATTR_RO(state);

static ssize_t drivers_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return cpldjtag_drivers_show(buf);
}
static DEVICE_ATTR_RO(drivers);

static ssize_t pins_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return cpldjtag_pins_show(buf);
}
static DEVICE_ATTR_RO(pins);

static struct attribute *cpldjtag_attrs[] = {
	&dev_attr_download.attr, &dev_attr_result.attr, &dev_attr_state.attr,
	&dev_attr_drivers.attr,	 &dev_attr_pins.attr,	NULL,
};
ATTRIBUTE_GROUPS(cpldjtag);

static int __init cpldjtag_init(void)
{
	int error;

	error = cpldjtag_pins_request();
	if (error)
		return error;
	device = platform_device_register_simple("cpldjtag", PLATFORM_DEVID_NONE, NULL, 0);
	if (IS_ERR(device)) {
		error = PTR_ERR(device);
		goto release_pins;
	}
	error = sysfs_create_groups(&device->dev.kobj, cpldjtag_groups);
	if (error)
		goto unregister_device;
	return 0;

unregister_device:
	platform_device_unregister(device);
release_pins:
	cpldjtag_pins_release();
	return error;
}

static void __exit cpldjtag_exit(void)
{
	/* Waits for a write that is under way. */
	sysfs_remove_groups(&device->dev.kobj, cpldjtag_groups);
	platform_device_unregister(device);
	cpldjtag_pins_release();
}

module_init(cpldjtag_init);
module_exit(cpldjtag_exit);
MODULE_LICENSE("Dual BSD/GPL");
MODULE_VERSION("v1.0");
MODULE_DESCRIPTION("JTAG downloads over four GPIO lines");
