// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

// For tests to set it.
#define module_param(name, type, mode) type *const parameter_##name = &name
#define MODULE_PARM_DESC(name, text) _Static_assert(sizeof(text) > 0, "")
