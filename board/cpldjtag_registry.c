// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
/*
 * The drivers that are registered, and the one that a download is using.
 *
 * A driver's record and code belong to its module, which may be unloaded while it plays: its
 * unregistering takes it off the list first and then waits until the download has given it back.
 */
#define pr_fmt(fmt) KBUILD_MODNAME ": " fmt

#include <linux/export.h>
#include <linux/kernel.h>
#include <linux/mutex.h>
#include <linux/string.h>
#include <linux/sysfs.h>
#include <linux/wait.h>

#include "cpldjtag_internal.h"

static DEFINE_MUTEX(registry_lock);
static LIST_HEAD(drivers);
static struct cpldjtag_driver *lent;
static DECLARE_WAIT_QUEUE_HEAD(given_back);

static struct cpldjtag_driver *find_driver(const char *name)
{
	struct cpldjtag_driver *driver;

	list_for_each_entry (driver, &drivers, link) {
		if (!strcmp(driver->name, name))
			return driver;
	}
	return NULL;
}

s32 cpldjtag_driver_register(struct cpldjtag_driver *driver)
{
	s32 result = 0;

	if (!driver || !driver->name || !driver->ops || !driver->ops->download)
		return -EINVAL;
	mutex_lock(&registry_lock);
	if (find_driver(driver->name))
		result = -EEXIST;
	else
		list_add_tail(&driver->link, &drivers);
	mutex_unlock(&registry_lock);
	return result;
}
EXPORT_SYMBOL(cpldjtag_driver_register);

void cpldjtag_driver_unregister(const char *name)
{
	struct cpldjtag_driver *driver;

	mutex_lock(&registry_lock);
	driver = name ? find_driver(name) : NULL;
	if (driver) {
		list_del(&driver->link);
		memset(&driver->link, 0, sizeof(driver->link));
	}
	mutex_unlock(&registry_lock);
	if (!driver) {
		pr_err("no driver %s is registered\n", name ?: "(null)");
		return;
	}
	/* Idle, because a download may well take longer than a hung task may. */
	wait_event_idle(given_back, smp_load_acquire(&lent) != driver);
}
EXPORT_SYMBOL(cpldjtag_driver_unregister);

struct cpldjtag_driver *cpldjtag_driver_lend(void)
{
	struct cpldjtag_driver *driver;

	mutex_lock(&registry_lock);
	driver = list_first_entry_or_null(&drivers, struct cpldjtag_driver, link);
	WRITE_ONCE(lent, driver);
	mutex_unlock(&registry_lock);
	return driver;
}

void cpldjtag_driver_give_back(void)
{
	/* Pairs with the waiter's acquire: all that the download did comes before. */
	smp_store_release(&lent, NULL);
	wake_up_all(&given_back);
}

ssize_t cpldjtag_drivers_show(char *page)
{
	struct cpldjtag_driver *driver;
	ssize_t length = 0;

	mutex_lock(&registry_lock);
	list_for_each_entry (driver, &drivers, link)
		length += sysfs_emit_at(page, length, "%s %u %u %u\n", driver->name, driver->ids[0],
					driver->ids[1], driver->ids[2]);
	mutex_unlock(&registry_lock);
	return length;
}
