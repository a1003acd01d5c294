// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Makes the long run-tests of a file short ones, for the player holds a processor while it waits.
#pragma once

#include <cstdint>

#include "tvb/bytes.h"
#include "tvb/header.h"

namespace tvb {

struct SplitFile {
  Buffer image;
  uint64_t split = 0;                 // run-tests that were too long
  uint64_t longest_microseconds = 0;  // of these
};

// The file with each run-test of more than `milliseconds` (1 or more) in pieces that take no
// longer: loops, and one after the other inside the file's own loops. All else stays byte for byte;
// a sealed file is sealed anew. The clocks stay the same, but that a piece of a time may lose a
// part of a clock at a frequency that is not a whole number of kHz. A run-test of which a million
// pieces inside a loop are not enough has longer ones. The image has no errors.
SplitFile SplitWaits(Bytes image, const HeaderView &header, uint64_t milliseconds);

}  // namespace tvb
