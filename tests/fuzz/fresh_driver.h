// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver keeps some of its state from one download to the next; a finding must not depend on
// the inputs before it.
#pragma once

namespace fuzz {

// Brings what the driver's unloading leaves as it is to its value at load. The driver is unloaded.
void FreshDriver();

}  // namespace fuzz
