// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks the registers that records carry: shifts, headers and trailers.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"
#include "tvb/finding.h"
#include "tvb/play_order.h"
#include "tvb/record_view.h"

namespace tvb {

// The player writes a shift down as one byte a clock, and one more, in an allocation of at most 4
// MiB.
constexpr uint64_t kMostClocks = (4u << 20) - 1;

// The clocks of a shift with headers and trailers, from Run-Test/Idle back to it.
uint64_t ShiftClocks(const RecordView &record, const PadBits &pads);

// Checks the blocks and registers of a shift, header or trailer record. `pads`: what is in force
// for it. Returns false if something is broken that explains whatever else is wrong with the
// record.
bool CheckData(Bytes image, const RecordView &record, const PadBits &pads, Findings &findings);

}  // namespace tvb
