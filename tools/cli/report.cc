// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

#include "tools/cli/progress.h"
#include "tools/cli/terminal.h"

namespace tool {
namespace {

struct Kind {
  const char *name;
  const char *colour;
};

constexpr Kind kError = {"error", "\033[1;31m"};
constexpr Kind kWarning = {"warning", "\033[1;35m"};
constexpr Kind kNote = {"note", "\033[1;36m"};
constexpr const char *kBold = "\033[1m";
constexpr const char *kPlain = "\033[0m";

void Print(const Kind &kind, std::string_view place, std::string_view text) {
  HideProgress();
  if (place.empty()) {
    place = "tvb";
  }
  if (MayColour(STDERR_FILENO)) {
    fmt::print(stderr, "{}{}:{} {}{}:{} {}\n", kBold, place, kPlain, kind.colour, kind.name, kPlain,
               text);
  } else {
    fmt::print(stderr, "{}: {}: {}\n", place, kind.name, text);
  }
}

}  // namespace

void Error(std::string_view place, std::string_view text) {
  Print(kError, place, text);
}

void Warning(std::string_view place, std::string_view text) {
  Print(kWarning, place, text);
}

void Note(std::string_view place, std::string_view text) {
  Print(kNote, place, text);
}

}  // namespace tool
