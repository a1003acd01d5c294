// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

struct kobject {
  int unused;
};

enum kobject_action { KOBJ_CHANGE };

static inline int kobject_uevent_env(struct kobject *object, enum kobject_action action,
                                     char **variables) {
  return 0;
}
