// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * cpldjtag.ko: the JTAG download framework.
 *
 * It serves one chain, whose lines are given in one of three ways:
 *   by the device tree      a node "quorlan,cpldjtag", see docs/bindings/
 *   lines=CHIP:N,N,N,N      the label of a GPIO chip and the offsets of TCK, TMS, TDI and TDO there
 *   lines=TCK,TMS,TDI,TDO   the names that the lines have
 *   tck= tms= tdi= tdo=     global GPIO numbers, on kernels that have them; they may be others at
 *                           each boot
 * Lines that cannot be had are told in the kernel log. With parameters the module does not load
 * then; a device of the tree waits for a chip that is not there yet.
 *
 * Its attributes are described in docs/ABI/testing/sysfs-platform-cpldjtag.
 *
 * Unloading a driver waits until its download has ended; this module cannot be unloaded while a
 * driver is loaded, nor the lines' module while this one is.
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
static_assert(offsetof(struct download_context, pins) == 16);
static_assert(offsetof(struct download_context, pin_ops) == 128);
static_assert(offsetof(struct cpldjtag_pins, tdi) == 24);
static_assert(offsetof(struct cpldjtag_pins, tms) == 28);
static_assert(offsetof(struct cpldjtag_pins, tdo) == 32);
static_assert(offsetof(struct cpldjtag_pins, tck) == 36);
static_assert(offsetof(struct cpldjtag_pin_ops, drive_high) == 16);
static_assert(offsetof(struct cpldjtag_pin_ops, drive_low) == 24);
static_assert(offsetof(struct cpldjtag_pin_ops, read) == 32);
static_assert(sizeof(struct cpldjtag_ops) == 40);

static ssize_t download_store(struct device *dev, struct device_attribute *attr, const char *buf,
			      size_t count)
{
	char *name;
	int error;

	name = kstrndup(buf, count, GFP_KERNEL);
	if (!name)
		return -ENOMEM;
	/* A name with a zero byte in it is not usable. */
	error = strlen(name) == count ? cpldjtag_download_file(dev, strim(name)) : -EINVAL;
	kfree(name);
	return error ? error : count;
}
static DEVICE_ATTR_WO(download);

static ssize_t cancel_store(struct device *dev, struct device_attribute *attr, const char *buf,
			    size_t count)
{
	return sysfs_streq(buf, "1") ? cpldjtag_status_cancel() ?: count : -EINVAL;
}
static DEVICE_ATTR_WO(cancel);

static ssize_t drivers_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return cpldjtag_drivers_show(buf);
}
static DEVICE_ATTR_RO(drivers);

static ssize_t pins_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return cpldjtag_lines_show(buf);
}
static DEVICE_ATTR_RO(pins);

static struct attribute *attrs[] = {&dev_attr_download.attr, &dev_attr_cancel.attr,
				    &dev_attr_drivers.attr, &dev_attr_pins.attr, NULL};
static const struct attribute_group group = {.attrs = attrs};
static const struct attribute_group *groups[] = {&group, &cpldjtag_status_group, NULL};

static unsigned long serving;

static void stop(void *dev)
{
	/* A download may last for hours. */
	cpldjtag_status_cancel();
	cpldjtag_upload_remove(dev);
	/* Waits for a write that is under way. */
	sysfs_remove_groups(&((struct device *)dev)->kobj, groups);
	cpldjtag_lines_release();
	clear_bit_unlock(0, &serving);
}

int cpldjtag_start(struct device *dev)
{
	int error;

	if (test_and_set_bit(0, &serving)) {
		dev_err(dev, "only one chain can be served, and another device has that\n");
		return -EBUSY;
	}
	error = cpldjtag_lines_request(dev);
	if (error)
		goto end_serving;
	error = sysfs_create_groups(&dev->kobj, groups);
	if (error)
		goto release_lines;
	error = cpldjtag_upload_add(dev);
	if (error)
		goto remove_groups;
	/* An action, since what a remove operation returns differs between kernels. */
	return devm_add_action_or_reset(dev, stop, dev);

remove_groups:
	sysfs_remove_groups(&dev->kobj, groups);
release_lines:
	cpldjtag_lines_release();
end_serving:
	clear_bit_unlock(0, &serving);
	return error;
}

/* The module's own device, which has the lines of the parameters, and its driver. */
static struct platform_device *device;
static struct platform_driver driver = {.driver = {.name = "cpldjtag"}};
static int probe_error;

static int probe(struct platform_device *device)
{
	probe_error = cpldjtag_start(&device->dev);
	/* The driver core would tell of any other once more. */
	return probe_error ? -ENODEV : 0;
}

static int add_device(void)
{
	int error;

	error = cpldjtag_lookup_text() ? cpldjtag_lookup_add(driver.driver.name) : 0;
	if (error)
		return error;
	device = platform_create_bundle(&driver, probe, NULL, 0, NULL, 0);
	if (!IS_ERR(device))
		return 0;
	cpldjtag_lookup_remove();
	return probe_error ?: PTR_ERR(device);
}

static void remove_device(void)
{
	platform_device_unregister(device);
	platform_driver_unregister(&driver);
	cpldjtag_lookup_remove();
}

static bool has_parameters(void)
{
	return cpldjtag_numbers_given() || cpldjtag_lookup_text();
}

/* Why there is not exactly one way to the lines; null if there is. */
static const char *why_no_way(void)
{
	if (cpldjtag_numbers_given() && cpldjtag_lookup_text())
		return "lines= and the numbers tck= tms= tdi= tdo= exclude each other";
	if (has_parameters() && cpldjtag_tree_has_device())
		return "the device tree has the lines, so parameters must not give any";
	if (!has_parameters() && !cpldjtag_tree_has_device())
		return "no lines: lines= is missing, and the device tree has no device for it";
	return NULL;
}

static int __init cpldjtag_init(void)
{
	const char *why = why_no_way();

	if (why) {
		pr_err("%s\n", why);
		return -EINVAL;
	}
	return has_parameters() ? add_device() : cpldjtag_tree_add();
}

static void __exit cpldjtag_exit(void)
{
	if (has_parameters())
		remove_device();
	else
		cpldjtag_tree_remove();
}

module_init(cpldjtag_init);
module_exit(cpldjtag_exit);
MODULE_LICENSE("Dual BSD/GPL");
MODULE_VERSION("v1.0");
MODULE_DESCRIPTION("JTAG downloads over four GPIO lines");
