// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The framework module's registry, as a driver sees it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace shim {

// Sets what cpldjtag_driver_register returns from now on; 0 after Reset().
void SetRegisterResult(int32_t result);

// The record passed to each cpldjtag_driver_register and the name passed to each
// cpldjtag_driver_unregister, in order.
const std::vector<void *> &Registered();
const std::vector<const char *> &Unregistered();

// Calls `observer` at each cpldjtag_driver_unregister; an empty one removes it.
void OnUnregister(std::function<void()> observer);

void ResetFramework();

}  // namespace shim
