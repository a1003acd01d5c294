// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace tool {

bool IsTerminal(int fd) {
  const char *type = std::getenv("TERM");
  return type != nullptr && std::string_view(type) != "dumb" && isatty(fd) == 1;
}

bool MayColour(int fd) {
  const char *no_colour = std::getenv("NO_COLOR");
  return (no_colour == nullptr || *no_colour == 0) && IsTerminal(fd);
}

int TerminalWidth(int fd) {
  winsize size = {};
  return ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace tool
