// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What stands in for the kernel, the framework and the log module on the host. It is stricter than
// they are: whatever would be an oops, a warning or silent damage in a kernel fails the running
// test at once.
#pragma once

#include "shim/allocator.h"
#include "shim/clock.h"
#include "shim/files.h"
#include "shim/fixture.h"
#include "shim/framework.h"
#include "shim/messages.h"
#include "shim/pins.h"
