// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#define need_resched() 0
#define cond_resched() ((void)0)
