// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The framework module's registry, as far as a driver sees it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace shim {

// What cpldjtag_driver_register returns from now on; 0 at Reset().
void SetRegisterResult(int32_t result);

// The record given to each cpldjtag_driver_register and the name given to each
// cpldjtag_driver_unregister, in order.
const std::vector<void *> &Registered();
const std::vector<const char *> &Unregistered();

// Calls `observer` at each cpldjtag_driver_unregister. An empty one: nobody.
void OnUnregister(std::function<void()> observer);

void ResetFramework();

}  // namespace shim
