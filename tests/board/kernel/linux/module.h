// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

#define module_param(name, type, mode) _Static_assert(sizeof(name) > 0, "")
#define MODULE_PARM_DESC(name, text) _Static_assert(sizeof(name) > 0, "")
