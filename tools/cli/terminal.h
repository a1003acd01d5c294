// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What kind of thing output goes to.
#pragma once

namespace tool {

// True if the file descriptor is a terminal that can do more than print lines (TERM is neither
// unset nor "dumb").
bool IsTerminal(int fd);

// True if text on it may be coloured: a terminal, and the variable NO_COLOR is unset or empty.
bool MayColour(int fd);

// The width of the terminal in columns; 80 where it cannot be told.
int TerminalWidth(int fd);

}  // namespace tool
