// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * Downloads of an image that is written to the kernel, on kernels whose firmware class has uploads:
 * /sys/class/firmware/cpldjtag, see sysfs-class-firmware in the kernel's Documentation/ABI.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/err.h>
#include <linux/firmware.h>
#include <linux/mm.h>
#include <linux/string.h>
#include <linux/version.h>
#include <linux/workqueue.h>

#include "cpldjtag_internal.h"

static struct fw_upload *upload;

static enum fw_upload_err upload_error(int error)
{
	switch (error) {
	case 0:
		return FW_UPLOAD_ERR_NONE;
	case -EBUSY:
		return FW_UPLOAD_ERR_BUSY;
	case -ECANCELED:
		return FW_UPLOAD_ERR_CANCELED;
	case -ENOMEM:
		return FW_UPLOAD_ERR_RW_ERROR;
#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 8, 0)
	case -EBADMSG:
		return FW_UPLOAD_ERR_FW_INVALID;
#endif
	default:
		return FW_UPLOAD_ERR_HW_ERROR;
	}
}

static enum fw_upload_err prepare(struct fw_upload *fwl, const u8 *data, u32 size)
{
	return FW_UPLOAD_ERR_NONE;
}

struct download {
	struct work_struct work;
	struct device *dev;
	const u8 *image;
	u32 size;
	int error;
};

static void run(struct work_struct *work)
{
	struct download *download = container_of(work, struct download, work);

	download->error = cpldjtag_download_begin(download->dev);
	if (!download->error)
		download->error =
			cpldjtag_download_image(download->dev, download->image, download->size);
}

/* In one piece, for a driver plays whole files; and not in a worker that others wait for. */
static enum fw_upload_err write(struct fw_upload *fwl, const u8 *data, u32 offset, u32 size,
				u32 *written)
{
	struct download download = {.dev = fwl->dd_handle, .size = size};
	u8 *image = cpldjtag_image_alloc(size);

	if (!image)
		return FW_UPLOAD_ERR_RW_ERROR;
	memcpy(image, data + offset, size);
	download.image = image;
	INIT_WORK_ONSTACK(&download.work, run);
	queue_work(system_unbound_wq, &download.work);
	flush_work(&download.work);
	destroy_work_on_stack(&download.work);
	kvfree(image);
	*written = size;
	return upload_error(download.error);
}

static enum fw_upload_err poll_complete(struct fw_upload *fwl)
{
	return FW_UPLOAD_ERR_NONE;
}

static void cancel(struct fw_upload *fwl)
{
	cpldjtag_status_cancel();
}

static const struct fw_upload_ops upload_ops = {
	.prepare = prepare,
	.write = write,
	.poll_complete = poll_complete,
	.cancel = cancel,
};

int cpldjtag_upload_add(struct device *dev)
{
	/* Not for this module, which could then not be unloaded: it ends the upload itself. */
	upload = firmware_upload_register(NULL, dev, "cpldjtag", &upload_ops, dev);
	return PTR_ERR_OR_ZERO(upload);
}

void cpldjtag_upload_remove(struct device *dev)
{
	firmware_upload_unregister(upload);
}
