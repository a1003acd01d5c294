// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * What is known of the download that runs, or else of the last one: the attributes, the event that
 * tells of its end, and a line in the kernel log.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/ctype.h>
#include <linux/errno.h>
#include <linux/kernel.h>
#include <linux/kobject.h>
#include <linux/ktime.h>
#include <linux/limits.h>
#include <linux/math64.h>
#include <linux/spinlock.h>
#include <linux/string.h>
#include <linux/sysfs.h>

#include "cpldjtag_internal.h"

static const char *const state_names[] = {
	[CPLDJTAG_IDLE] = "idle",
	[CPLDJTAG_LOADING] = "loading",
	[CPLDJTAG_RUNNING] = "running",
};

/* The name of an image that nobody named. */
#define IMAGE "image"

/*
 * Written by the download's thread only, and read by anybody, under the lock. @result and @error
 * are of the last download that has ended, the rest is of the one that runs, if one does. But
 * @image_name and @total are what anybody has said of the next one.
 */
static DEFINE_SPINLOCK(status_lock);
static struct {
	struct device *dev;
	enum cpldjtag_state state;
	char file[NAME_MAX];
	char image_name[NAME_MAX];
	bool has_crc;
	u32 crc;
	u64 total; /* clocks that the file is said to have, 0 for unknown */
	u64 began; /* in nanoseconds */
	u64 elapsed;
	bool played; /* the driver has been called, and returned this: */
	s32 returned;
	char result[16];
	char error[48];
} status = {.image_name = IMAGE, .result = "none", .error = "none"};

static void set_state(enum cpldjtag_state state)
{
	struct device *dev = status.dev;

	spin_lock(&status_lock);
	status.state = state;
	spin_unlock(&status_lock);
	sysfs_notify(&dev->kobj, NULL, "state");
}

enum cpldjtag_state cpldjtag_status_state(void)
{
	return READ_ONCE(status.state);
}

bool cpldjtag_status_is_name(const char *text)
{
	if (!*text)
		return false;
	while (*text && !iscntrl(*text))
		text++;
	return !*text;
}

static void begin(struct device *dev, const char *file)
{
	cpldjtag_pins_begin();
	status.dev = dev;
	status.state = CPLDJTAG_LOADING;
	strscpy(status.file, file ?: status.image_name, sizeof(status.file));
	status.has_crc = false;
	status.began = ktime_get_ns();
	status.played = false;
}

int cpldjtag_status_begin(struct device *dev, const char *file)
{
	int error = -EBUSY;

	spin_lock(&status_lock);
	if (status.state == CPLDJTAG_IDLE) {
		begin(dev, file);
		error = 0;
	}
	spin_unlock(&status_lock);
	if (!error)
		sysfs_notify(&dev->kobj, NULL, "state");
	return error;
}

const char *cpldjtag_status_file(void)
{
	return status.file;
}

int cpldjtag_status_cancel(void)
{
	int error = -ENODEV;

	spin_lock(&status_lock);
	if (status.state != CPLDJTAG_IDLE) {
		cpldjtag_pins_stop(-ECANCELED);
		error = 0;
	}
	spin_unlock(&status_lock);
	return error;
}

void cpldjtag_status_image(u32 crc)
{
	spin_lock(&status_lock);
	status.crc = crc;
	status.has_crc = true;
	spin_unlock(&status_lock);
}

void cpldjtag_status_running(void)
{
	spin_lock(&status_lock);
	status.began = ktime_get_ns();
	spin_unlock(&status_lock);
	set_state(CPLDJTAG_RUNNING);
}

void cpldjtag_status_played(s32 result)
{
	status.played = true;
	status.returned = result;
}

/* The words of the kernel's own firmware uploads (Documentation/ABI, sysfs-class-firmware). */
static const char *error_word(int error)
{
	switch (error) {
	case -EINTR:
	case -ECANCELED:
		return "user-abort";
	case -EBADMSG:
		return "firmware-invalid";
	case -EFBIG:
		return "invalid-file-size";
	case -EIO:
		return "hw-error";
	default:
		return "read-write-error";
	}
}

/* With the lock held. */
static void set_outcome(int error)
{
	if (status.played)
		scnprintf(status.result, sizeof(status.result), "%d", status.returned);
	else
		strscpy(status.result, "none", sizeof(status.result));
	if (error)
		scnprintf(status.error, sizeof(status.error), "%s:%s",
			  status.played ? "programming" : "preparing", error_word(error));
	else
		strscpy(status.error, "none", sizeof(status.error));
}

/* Where in its clocks a download ended, as far as that is known. */
static void tell_end(int error)
{
	const struct cpldjtag_progress at = cpldjtag_pins_progress();
	const u64 total = READ_ONCE(status.total);
	char of[32] = "";

	if (total)
		scnprintf(of, sizeof(of), " of %llu", total);
	if (!error)
		pr_info("%s: completed, %llu clocks in %llu ms\n", status.file, at.clocks,
			div_u64(status.elapsed, NSEC_PER_MSEC));
	else if (error == -EINTR || error == -ECANCELED)
		pr_warn("%s: cancelled at clock %llu%s\n", status.file, at.clocks, of);
	else if (!status.played)
		pr_err("%s: not played: error %d\n", status.file, error);
	else if (at.error)
		pr_err("%s: failed at clock %llu%s: a line could not be used: error %d\n",
		       status.file, at.error_clock, of, at.error);
	else if (cpldjtag_pins_ended_reading())
		pr_err("%s: failed at clock %llu%s: TDO read %u\n", status.file, at.clocks, of,
		       at.read_level);
	else
		pr_err("%s: failed at clock %llu%s: not by a comparison, see the driver's "
		       "messages\n",
		       status.file, at.clocks, of);
}

struct event {
	char result[32];
	char error[64];
	char file[NAME_MAX + 32];
};

static void fill_event(struct event *event)
{
	scnprintf(event->result, sizeof(event->result), "CPLDJTAG_RESULT=%s", status.result);
	scnprintf(event->error, sizeof(event->error), "CPLDJTAG_ERROR=%s", status.error);
	scnprintf(event->file, sizeof(event->file), "CPLDJTAG_FILE=%s", status.file);
}

void cpldjtag_status_end(int error)
{
	struct device *dev = status.dev;
	struct event event;
	char *variables[] = {event.result, event.error, event.file, NULL};

	spin_lock(&status_lock);
	status.elapsed = ktime_get_ns() - status.began;
	set_outcome(error);
	strscpy(status.image_name, IMAGE, sizeof(status.image_name));
	spin_unlock(&status_lock);
	/* What has been told of a damaged file is enough. */
	if (error != -EBADMSG)
		tell_end(error);
	fill_event(&event);
	WRITE_ONCE(status.total, 0);
	/* From here on another download may begin. */
	set_state(CPLDJTAG_IDLE);
	kobject_uevent_env(&dev->kobj, KOBJ_CHANGE, variables);
}

/* ---- the attributes */

static ssize_t state_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return sysfs_emit(buf, "%s\n", state_names[cpldjtag_status_state()]);
}
static DEVICE_ATTR_RO(state);

static ssize_t show_text(const char *text, char *buf)
{
	ssize_t length;

	spin_lock(&status_lock);
	length = sysfs_emit(buf, "%s\n", text);
	spin_unlock(&status_lock);
	return length;
}

static ssize_t result_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return show_text(status.result, buf);
}
static DEVICE_ATTR_RO(result);

static ssize_t error_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return show_text(status.error, buf);
}
static DEVICE_ATTR_RO(error);

static ssize_t file_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return show_text(status.file, buf);
}
static DEVICE_ATTR_RO(file);

static ssize_t image_name_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return show_text(status.image_name, buf);
}

static ssize_t image_name_store(struct device *dev, struct device_attribute *attr, const char *buf,
				size_t count)
{
	char name[NAME_MAX];
	const char *text;

	/* Nor a zero byte in it. */
	if (count >= sizeof(name) || strlen(buf) != count)
		return -EINVAL;
	strscpy(name, buf, sizeof(name));
	text = strim(name);
	if (!cpldjtag_status_is_name(text))
		return -EINVAL;
	spin_lock(&status_lock);
	strscpy(status.image_name, text, sizeof(status.image_name));
	spin_unlock(&status_lock);
	return count;
}
static DEVICE_ATTR_RW(image_name);

static ssize_t crc_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	ssize_t length;

	spin_lock(&status_lock);
	length = status.has_crc ? sysfs_emit(buf, "%08X\n", status.crc) : sysfs_emit(buf, "none\n");
	spin_unlock(&status_lock);
	return length;
}
static DEVICE_ATTR_RO(crc);

static ssize_t elapsed_ms_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	u64 elapsed;

	spin_lock(&status_lock);
	elapsed = status.state == CPLDJTAG_IDLE ? status.elapsed : ktime_get_ns() - status.began;
	spin_unlock(&status_lock);
	return sysfs_emit(buf, "%llu\n", div_u64(elapsed, NSEC_PER_MSEC));
}
static DEVICE_ATTR_RO(elapsed_ms);

static ssize_t clocks_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return sysfs_emit(buf, "%llu\n", cpldjtag_pins_progress().clocks);
}
static DEVICE_ATTR_RO(clocks);

static ssize_t reads_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return sysfs_emit(buf, "%llu\n", cpldjtag_pins_progress().reads);
}
static DEVICE_ATTR_RO(reads);

static ssize_t last_read_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	const struct cpldjtag_progress at = cpldjtag_pins_progress();

	if (!at.reads)
		return sysfs_emit(buf, "none\n");
	return sysfs_emit(buf, "%llu %u\n", at.read_clock, at.read_level);
}
static DEVICE_ATTR_RO(last_read);

static ssize_t total_clocks_show(struct device *dev, struct device_attribute *attr, char *buf)
{
	return sysfs_emit(buf, "%llu\n", READ_ONCE(status.total));
}

static ssize_t total_clocks_store(struct device *dev, struct device_attribute *attr,
				  const char *buf, size_t count)
{
	u64 total;
	int error;

	error = kstrtou64(buf, 10, &total);
	if (error)
		return error;
	WRITE_ONCE(status.total, total);
	return count;
}
static DEVICE_ATTR_RW(total_clocks);

static struct attribute *attrs[] = {
	&dev_attr_state.attr,	   &dev_attr_result.attr,	&dev_attr_error.attr,
	&dev_attr_file.attr,	   &dev_attr_image_name.attr,	&dev_attr_crc.attr,
	&dev_attr_elapsed_ms.attr, &dev_attr_clocks.attr,	&dev_attr_reads.attr,
	&dev_attr_last_read.attr,  &dev_attr_total_clocks.attr, NULL,
};

const struct attribute_group cpldjtag_status_group = {.attrs = attrs};
