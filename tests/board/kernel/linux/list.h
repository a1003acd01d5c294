// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

struct list_head {
  struct list_head *next, *prev;
};
