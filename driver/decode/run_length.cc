// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "decode/run_length.h"

#include "decode/block.h"
#include "player/reader.h"

extern "C" {

u8 *Quorlan_BytesDecode(s64 count) {
  u8 *block = m7_alloc_decoded(count);
  if (!block)
    return nullptr;

  const u8 escape = static_cast<u8>(fgetc());
  s64 pending = 0;
  for (s64 i = 0; i < count; i++) {
    if (pending > 0) {
      block[i] = escape;
      pending--;
      continue;
    }
    block[i] = static_cast<u8>(fgetc());
    if (block[i] == escape)
      pending = Quorlan_NumberDecode();
  }
  return block;
}
}
