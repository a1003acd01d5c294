// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Open kernel files: kernel_read, and m7_file_pos, which returns the address of a file's position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace shim {

// Opens a file with this content at position 0. It lives until Reset().
void *OpenFile(std::string content);

// The file's own position in bytes.
int64_t FilePosition(void *file);

// Makes every later read fail with an error code (true) or succeed again (false).
void FailReads(bool fail);

// How often a file was read, failed reads included.
size_t Reads();

void ResetFiles();

}  // namespace shim
