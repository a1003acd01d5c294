// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * Downloads of an image that is written to the kernel, on kernels whose firmware class has no
 * uploads: the same attributes, in the folder of the device.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/kernel.h>
#include <linux/mm.h>
#include <linux/mutex.h>
#include <linux/string.h>
#include <linux/sysfs.h>
#include <linux/version.h>
#include <linux/workqueue.h>

#include "cpldjtag_internal.h"

/* The image: received between a 1 and a 0 in "loading", then downloaded and freed by the work. */
static DEFINE_MUTEX(upload_lock);
static struct {
	struct device *dev;
	bool receiving;
	bool playing;
	u8 *image;
	size_t size;
	size_t room;
	struct work_struct work;
	struct workqueue_struct *queue;
} upload;

static void drop_image(void)
{
	kvfree(upload.image);
	upload.image = NULL;
	upload.size = 0;
	upload.room = 0;
	upload.receiving = false;
	upload.playing = false;
}

static void work(struct work_struct *unused)
{
	cpldjtag_download_image(upload.dev, upload.image, upload.size);
	mutex_lock(&upload_lock);
	drop_image();
	mutex_unlock(&upload_lock);
}

static int start_receiving(void)
{
	if (upload.playing)
		return -EBUSY;
	drop_image();
	upload.receiving = true;
	return 0;
}

static int start_playing(struct device *dev)
{
	int error;

	if (!upload.receiving || !upload.image)
		return -EINVAL;
	error = cpldjtag_download_begin(dev);
	if (error)
		return error;
	upload.dev = dev;
	upload.receiving = false;
	upload.playing = true;
	upload.image[upload.size] = 0;
	queue_work(upload.queue, &upload.work);
	return 0;
}

static int abort_receiving(void)
{
	if (!upload.receiving)
		return -EINVAL;
	drop_image();
	return 0;
}

static ssize_t loading_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return sysfs_emit(buf, "%d\n", READ_ONCE(upload.receiving));
}

static ssize_t loading_store(struct device *dev, struct device_attribute *attr, const char *buf,
			     size_t count)
{
	int step, error;

	error = kstrtoint(buf, 10, &step);
	if (error)
		return error;
	/* Of a download that has ended the work has only its image left to free. */
	if (cpldjtag_status_state() == CPLDJTAG_IDLE)
		flush_work(&upload.work);
	mutex_lock(&upload_lock);
	switch (step) {
	case 1:
		error = start_receiving();
		break;
	case 0:
		error = start_playing(dev);
		break;
	case -1:
		error = abort_receiving();
		break;
	default:
		error = -EINVAL;
	}
	mutex_unlock(&upload_lock);
	return error ?: count;
}
static DEVICE_ATTR_RW(loading);

static int make_room(size_t end)
{
	size_t room = clamp(2 * upload.room, end, CPLDJTAG_IMAGE_MAX);
	u8 *image;

	if (end <= upload.room)
		return 0;
	image = cpldjtag_image_alloc(room);
	if (!image)
		return -ENOMEM;
	memset(image + upload.size, 0, room - upload.size);
	if (upload.image)
		memcpy(image, upload.image, upload.size);
	kvfree(upload.image);
	upload.image = image;
	upload.room = room;
	return 0;
}

#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 16, 0)
#define bin_attribute_of_write const struct bin_attribute
#else
#define bin_attribute_of_write struct bin_attribute
#endif

static ssize_t data_write(struct file *file, struct kobject *kobj, bin_attribute_of_write *attr,
			  char *buf, loff_t offset, size_t count)
{
	int error = -EINVAL;

	mutex_lock(&upload_lock);
	if (upload.receiving && offset + count <= CPLDJTAG_IMAGE_MAX)
		error = make_room(offset + count);
	if (!error) {
		memcpy(upload.image + offset, buf, count);
		upload.size = max_t(size_t, upload.size, offset + count);
	}
	mutex_unlock(&upload_lock);
	return error ?: count;
}
static BIN_ATTR_WO(data, 0);

static ssize_t status_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	static const char *const names[] = {
		[CPLDJTAG_IDLE] = "idle",
		[CPLDJTAG_LOADING] = "preparing",
		[CPLDJTAG_RUNNING] = "programming",
	};

	return sysfs_emit(buf, "%s\n", names[cpldjtag_status_state()]);
}
static DEVICE_ATTR_RO(status);

static ssize_t remaining_size_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	size_t size;

	mutex_lock(&upload_lock);
	size = upload.playing ? upload.size : 0;
	mutex_unlock(&upload_lock);
	return sysfs_emit(buf, "%zu\n", size);
}
static DEVICE_ATTR_RO(remaining_size);

static struct attribute *attrs[] = {&dev_attr_loading.attr, &dev_attr_status.attr,
				    &dev_attr_remaining_size.attr, NULL};
static const struct attribute_group group = {.attrs = attrs};

int cpldjtag_upload_add(struct device *dev)
{
	int error;

	INIT_WORK(&upload.work, work);
	upload.queue = cpldjtag_download_queue();
	if (!upload.queue)
		return -ENOMEM;
	error = sysfs_create_bin_file(&dev->kobj, &bin_attr_data);
	if (error)
		goto destroy_queue;
	error = sysfs_create_group(&dev->kobj, &group);
	if (error)
		goto remove_data;
	return 0;

remove_data:
	sysfs_remove_bin_file(&dev->kobj, &bin_attr_data);
destroy_queue:
	destroy_workqueue(upload.queue);
	return error;
}

void cpldjtag_upload_remove(struct device *dev)
{
	sysfs_remove_group(&dev->kobj, &group);
	sysfs_remove_bin_file(&dev->kobj, &bin_attr_data);
	if (upload.playing)
		cpldjtag_pins_stop(-ECANCELED);
	destroy_workqueue(upload.queue);
	drop_image();
}
