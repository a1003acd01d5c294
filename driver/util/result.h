// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Results inside the module: 0 for success, else one of these.
#pragma once

#define RESULT_NO_MEMORY (-2)  // also: bad arguments at the entry
#define RESULT_BAD_HEADER (-7)
#define RESULT_MALFORMED (-10)
#define RESULT_VERIFY_FAILED (-17)  // stopped after a mismatch
