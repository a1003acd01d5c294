// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#pragma once

extern "C" {

// Frees and clears what the engine holds for a download: the vector, the four header/trailer
// vectors, the IDCODE and IO-status strings and the IO reference. Calling it again is harmless.
void Quorlan_FreeMemory(void);
}
