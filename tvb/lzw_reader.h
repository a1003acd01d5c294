// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Reads LZW streams; how they are built is told at AppendLzw().
#pragma once

#include <cstdint>

#include "tvb/cursor.h"
#include "tvb/decoded.h"

namespace tvb {

// How reading a stream came out.
struct LzwResult {
  enum Outcome {
    kEnded,       // with its end code
    kDictionary,  // the first byte is no dictionary size: nothing after it is read
    kPastEnd,     // the image ends before the end code
  };
  Outcome outcome = kEnded;
  uint8_t dictionary = 0;  // the first byte, as it stands
};

// Reads the stream at the cursor to its end code, however much it gives. Where `decoded` keeps
// nothing, the time is linear in the codes; else in the codes and the bytes kept.
LzwResult ReadLzw(Cursor &cursor, Decoded &decoded);

}  // namespace tvb
