// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * Downloads of an image that is written to the kernel, on kernels whose firmware class has uploads:
 * /sys/class/firmware/cpldjtag, see sysfs-class-firmware in the kernel's Documentation/ABI.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/err.h>
#include <linux/firmware.h>
#include <linux/mm.h>
#include <linux/mutex.h>
#include <linux/string.h>
#include <linux/version.h>
#include <linux/wait.h>
#include <linux/workqueue.h>

#include "cpldjtag_internal.h"

static struct fw_upload *upload;
static struct workqueue_struct *queue;
static DECLARE_WAIT_QUEUE_HEAD(ended);

/*
 * Whether the download that runs is the upload's, and whether the upload is to be cancelled, which
 * may be before its download is begun. A cancel between the cleanup of an upload and the class
 * being idle again, which cannot be told from that, ends the next upload before it drives a line.
 */
static DEFINE_MUTEX(upload_lock);
static bool begun;
static bool cancelled;

static enum fw_upload_err upload_error(int error)
{
	switch (error) {
	case 0:
		return FW_UPLOAD_ERR_NONE;
	case -EBUSY:
		return FW_UPLOAD_ERR_BUSY;
	case -ECANCELED:
		return FW_UPLOAD_ERR_CANCELED;
	case -EIO:
		return FW_UPLOAD_ERR_HW_ERROR;
#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 8, 0)
	case -EBADMSG:
		return FW_UPLOAD_ERR_FW_INVALID;
#endif
	default:
		return FW_UPLOAD_ERR_RW_ERROR;
	}
}

static enum fw_upload_err prepare(struct fw_upload *fwl, const u8 *data, u32 size)
{
	int error;

	mutex_lock(&upload_lock);
	error = cpldjtag_download_begin(fwl->dd_handle);
	begun = !error;
	if (begun && cancelled)
		cpldjtag_status_cancel();
	cancelled = cancelled && begun;
	mutex_unlock(&upload_lock);
	return upload_error(error);
}

struct download {
	struct work_struct work;
	struct device *dev;
	const u8 *image;
	u32 size;
	int error;
	bool ended;
};

static void run(struct work_struct *work)
{
	struct download *download = container_of(work, struct download, work);

	download->error = cpldjtag_download_image(download->dev, download->image, download->size);
	/* Pairs with the acquire of play(). */
	smp_store_release(&download->ended, true);
	wake_up(&ended);
}

/* Not in the worker of the class, which others wait for. */
static int play(struct device *dev, const u8 *image, u32 size)
{
	struct download download = {.dev = dev, .image = image, .size = size};

	INIT_WORK_ONSTACK(&download.work, run);
	queue_work(queue, &download.work);
	/* Idle, because a download may well take longer than a hung task may. */
	wait_event_idle(ended, smp_load_acquire(&download.ended));
	flush_work(&download.work);
	destroy_work_on_stack(&download.work);
	return download.error;
}

/* In one piece, for a driver plays whole files. */
static enum fw_upload_err write(struct fw_upload *fwl, const u8 *data, u32 offset, u32 size,
				u32 *written)
{
	u8 *image = cpldjtag_image_alloc(size);
	int error = -ENOMEM;

	if (image) {
		memcpy(image, data + offset, size);
		error = play(fwl->dd_handle, image, size);
	} else {
		cpldjtag_status_end(error);
	}
	kvfree(image);
	*written = size;
	return upload_error(error);
}

static enum fw_upload_err poll_complete(struct fw_upload *fwl)
{
	return FW_UPLOAD_ERR_NONE;
}

static void cancel(struct fw_upload *fwl)
{
	mutex_lock(&upload_lock);
	cancelled = true;
	if (begun)
		cpldjtag_status_cancel();
	mutex_unlock(&upload_lock);
}

static void cleanup(struct fw_upload *fwl)
{
	mutex_lock(&upload_lock);
	begun = false;
	cancelled = false;
	mutex_unlock(&upload_lock);
}

static const struct fw_upload_ops upload_ops = {
	.prepare = prepare,
	.write = write,
	.poll_complete = poll_complete,
	.cancel = cancel,
	.cleanup = cleanup,
};

int cpldjtag_upload_add(struct device *dev)
{
	queue = cpldjtag_download_queue();
	if (!queue)
		return -ENOMEM;
	/* Not for this module, which could then not be unloaded: it ends the upload itself. */
	upload = firmware_upload_register(NULL, dev, "cpldjtag", &upload_ops, dev);
	if (IS_ERR(upload))
		destroy_workqueue(queue);
	return PTR_ERR_OR_ZERO(upload);
}

void cpldjtag_upload_remove(struct device *dev)
{
	firmware_upload_unregister(upload);
	destroy_workqueue(queue);
}
