// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * log.ko: the log that the board's drivers write to.
 *
 * debugfs, in the directory "log":
 *   bytes     all records, byte for byte, one after the other; writing anything empties it
 *   dropped   how many bytes were lost, oldest first, because the store was full
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/debugfs.h>
#include <linux/ktime.h>
#include <linux/module.h>
#include <linux/mutex.h>
#include <linux/uaccess.h>
#include <linux/vmalloc.h>

#include "log.h"

#define RECORD_SIZE 8192
#define LINE_SIZE 512

static unsigned int store_kib = 1024;
module_param(store_kib, uint, 0444);
MODULE_PARM_DESC(store_kib, "size of the store behind debugfs log/bytes in KiB (at least 16)");

/* One mutex for everything below: a record reaches both outputs in one piece. */
static DEFINE_MUTEX(log_lock);
static char record[RECORD_SIZE];

/* The line that is being joined, and whose it is. */
static struct {
	u32 module;
	u32 level;
	size_t length;
	char text[LINE_SIZE];
} line;

static struct {
	char *bytes;
	size_t size;
	size_t used;
	u64 dropped;
} store;

static struct dentry *log_dir;

/* Keeps the newer half of what is there, or less if @length bytes need the room. */
static void store_make_room(size_t length)
{
	size_t drop = max(store.used / 2, store.used + length - store.size);

	memmove(store.bytes, store.bytes + drop, store.used - drop);
	store.used -= drop;
	store.dropped += drop;
}

static void store_append(const char *bytes, size_t length)
{
	if (length > store.size - store.used)
		store_make_room(length);
	memcpy(store.bytes + store.used, bytes, length);
	store.used += length;
}

static void line_emit(void)
{
	if (!line.length)
		return;
	if (line.level == LOG_LEVEL_ERROR)
		pr_err("[%u/%u] %.*s\n", line.module, line.level, (int)line.length, line.text);
	else
		pr_info("[%u/%u] %.*s\n", line.module, line.level, (int)line.length, line.text);
	line.length = 0;
}

static void line_append(char c)
{
	if (line.length == LINE_SIZE)
		line_emit();
	line.text[line.length++] = c;
}

/* The "\r" of a line end is not part of the line; any other is. */
static void line_join(u32 module, u32 level, const char *text, size_t length)
{
	size_t i;

	if (module != line.module || level != line.level)
		line_emit();
	line.module = module;
	line.level = level;
	for (i = 0; i < length; i++) {
		if (text[i] == '\r' && i + 1 < length && text[i + 1] == '\n')
			continue;
		if (text[i] == '\n')
			line_emit();
		else
			line_append(text[i]);
	}
	if (module == LOG_MODULE_SYSTEM)
		line_emit();
}

int drv_log_record(u32 module, u32 level, u32 flag, const char *fmt, ...)
{
	va_list args;
	int length;

	mutex_lock(&log_lock);
	va_start(args, fmt);
	length = vscnprintf(record, sizeof(record), fmt, args);
	va_end(args);
	store_append(record, length);
	line_join(module, level, record, length);
	mutex_unlock(&log_lock);
	return length;
}
EXPORT_SYMBOL(drv_log_record);

s64 log_get_timestamp_ms(void)
{
	return ktime_to_ms(ktime_get());
}
EXPORT_SYMBOL(log_get_timestamp_ms);

static ssize_t bytes_read(struct file *file, char __user *to, size_t count, loff_t *pos)
{
	ssize_t taken;

	mutex_lock(&log_lock);
	taken = simple_read_from_buffer(to, count, pos, store.bytes, store.used);
	mutex_unlock(&log_lock);
	return taken;
}

static ssize_t bytes_write(struct file *file, const char __user *from, size_t count, loff_t *pos)
{
	mutex_lock(&log_lock);
	store.used = 0;
	store.dropped = 0;
	mutex_unlock(&log_lock);
	return count;
}

static const struct file_operations bytes_fops = {
	.owner = THIS_MODULE,
	.open = simple_open,
	.read = bytes_read,
	.write = bytes_write,
	.llseek = default_llseek,
};

static int __init log_init(void)
{
	store.size = (size_t)max(store_kib, 16u) * 1024;
	store.bytes = vzalloc(store.size);
	if (!store.bytes)
		return -ENOMEM;
	/* A kernel without debugfs loses the files, not the log. */
	log_dir = debugfs_create_dir("log", NULL);
	debugfs_create_file("bytes", 0600, log_dir, NULL, &bytes_fops);
	debugfs_create_u64("dropped", 0400, log_dir, &store.dropped);
	return 0;
}

static void __exit log_exit(void)
{
	debugfs_remove_recursive(log_dir);
	line_emit();
	vfree(store.bytes);
}

module_init(log_init);
module_exit(log_exit);
MODULE_LICENSE("Dual BSD/GPL");
MODULE_VERSION("v1.0");
MODULE_DESCRIPTION("The log of a board's drivers");
