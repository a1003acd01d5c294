// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// An LZW decompressor that knows nothing of the module around it.
//
// A stream is a parameter byte k (0 to 3) and codes of variable width, packed least significant
// bit first. The dictionary has 512 << k codes: 0 to 255 are the bytes, 256 clears the dictionary,
// those from 257 on are strings. `next` counts up from 257 with every code: the code next - 1 is
// the string that it is itself defining, and the code `next` ends the stream. When the count would
// reach the size of the dictionary it restarts at 257, without a clear.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// Decodes a stream. `read_byte` returns the next byte, or ~0 (-1) when there is none;
// `write_byte` takes a decoded byte. Nothing is read past the end code.
// Returns 0 when the end code was read, 1 for a bad parameter byte, a failed read, or when out
// of memory.
s32 lzw_decompress(void (*write_byte)(u32), u32 (*read_byte)(void));

// The same, but `write_string` takes a whole string, the decoded bytes of one code.
s32 m7_lzw_decompress(void (*write_string)(const u8 *bytes, s64 count), u32 (*read_byte)(void));
}
