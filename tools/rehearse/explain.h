// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Why a download on a board failed, told from the clock of its last read.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/rehearse/play_input.h"

namespace tool {

// A read of TDO during a download, as the framework's attribute last_read tells of it.
struct BoardRead {
  uint64_t clock = 0;         // rising edges of TCK before it
  std::optional<bool> level;  // what was read; none: another level than the file expects
};

// Reports on standard error, in the words of TellVerdict(), which comparison of the last of `files`
// failed by that read. The files before it were downloaded before it, and completed. The driver
// plays them to an echo up to the read, so only one call in a process finds it as at load. Returns
// the exit code: kFailed, after a message, if no comparison fails there.
int ExplainRead(const std::vector<PlayInput> &files, const BoardRead &read);

}  // namespace tool
