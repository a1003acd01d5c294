// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Messages to the user, on standard error: "PLACE: error: TEXT".
#pragma once

#include <string_view>

namespace tool {

// Prints one message; without a place the program's name stands there. `place` is
// "FILE:LINE:COLUMN" or "FILE: offset 0x1A2 (record 7)". The text says what was expected and what
// to do, begins with a small letter and ends without a stop. The kind is coloured if standard error
// may be. A progress line is taken away first.
void Error(std::string_view place, std::string_view text);
void Warning(std::string_view place, std::string_view text);
void Note(std::string_view place, std::string_view text);

}  // namespace tool
