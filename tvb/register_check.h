// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks the registers in records: shifts, headers and trailers.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"
#include "tvb/finding.h"
#include "tvb/player.h"
#include "tvb/reader.h"

namespace tvb {

// Checks the blocks and registers of a shift, header or trailer record. `pads`: those in force for
// it. Returns false if something is broken that explains everything else wrong with the record.
bool CheckRegisters(Bytes image, const RecordView &record, const PadBits &pads, Findings &findings);

}  // namespace tvb
