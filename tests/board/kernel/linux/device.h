// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#include <linux/sysfs.h>

// Nothing here has a driver to be held.
struct device_driver {
  const struct module *owner;
};

struct device {
  struct kobject kobj;
  void *of_node;
  struct device_driver *driver;
  struct {
    enum { DL_DEV_NO_DRIVER, DL_DEV_DRIVER_BOUND } status;
  } links;
};

struct device_link {
  enum { DL_STATE_CONSUMER_PROBE } status;
};
#define DL_FLAG_AUTOREMOVE_CONSUMER 0
#define device_link_add(consumer, supplier, flags) \
  ((void)(consumer), (void)(supplier), (void)(flags), (struct device_link *)NULL)

struct device_attribute {
  struct attribute attr;
  ssize_t (*show)(struct device *dev, struct device_attribute *attr, char *buf);
  ssize_t (*store)(struct device *dev, struct device_attribute *attr, const char *buf,
                   size_t count);
};

#define DEVICE_ATTR_RO(_name) \
  struct device_attribute dev_attr_##_name = {{#_name}, _name##_show, NULL}
#define DEVICE_ATTR_RW(_name) \
  struct device_attribute dev_attr_##_name = {{#_name}, _name##_show, _name##_store}

#define dev_info_once(dev, format, ...) ((void)(dev), pr_info(format, __VA_ARGS__))
#define dev_err_probe(dev, error, format, ...) ((void)(dev), pr_err(format, __VA_ARGS__), error)
