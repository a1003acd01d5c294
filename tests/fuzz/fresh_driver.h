// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver keeps some state between downloads; a finding must not depend on earlier inputs.
#pragma once

namespace fuzz {

// Restores the load-time value of the state that unloading keeps. The driver must be unloaded.
void FreshDriver();

}  // namespace fuzz
