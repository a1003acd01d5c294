// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/report.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tools/cli/text.h"

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

bool MayColour(int fd) {
  const char *no_colour = std::getenv("NO_COLOR");
  return (no_colour == nullptr || *no_colour == 0) && IsTerminal(fd);
}

int TerminalWidth(int fd) {
  winsize size = {};
  return ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// A failure to report cannot be reported: fmt::print() would throw.
void PutText(const std::string &text) {
  fputs(text.c_str(), stderr);
}

MessageListener::Take listener;

void Print(const Kind &kind, std::string_view any_place, std::string_view any_text) {
  HideProgress();
  const std::string place = PrintableText(any_place.empty() ? "tvb" : any_place);
  const std::string text = PrintableText(any_text);
  if (listener) {
    listener(kind.name, place, text);
  }
  if (MayColour(STDERR_FILENO)) {
    PutText(fmt::format("{}{}:{} {}{}:{} {}\n", kBold, place, kPlain, kind.colour, kind.name,
                        kPlain, text));
  } else {
    PutText(fmt::format("{}: {}: {}\n", place, kind.name, text));
  }
}

constexpr auto kBetweenShows = std::chrono::milliseconds(100);

Progress *current = nullptr;

std::string Duration(double seconds) {
  const auto whole = static_cast<uint64_t>(seconds + 0.5);
  if (whole < 60) {
    return fmt::format("{} s", whole);
  }
  if (whole < 3600) {
    return fmt::format("{}:{:02} min", whole / 60, whole % 60);
  }
  return fmt::format("{}:{:02} h", whole / 3600, whole / 60 % 60);
}

}  // namespace

MessageListener::MessageListener(Take take) {
  listener = std::move(take);
}

MessageListener::~MessageListener() {
  listener = nullptr;
}

void Error(std::string_view place, std::string_view text) {
  Print(kError, place, text);
}

void Warning(std::string_view place, std::string_view text) {
  Print(kWarning, place, text);
}

void Note(std::string_view place, std::string_view text) {
  Print(kNote, place, text);
}

bool IsTerminal(int fd) {
  const char *type = std::getenv("TERM");
  return type != nullptr && std::string_view(type) != "dumb" && isatty(fd) == 1;
}

Progress::Progress(std::string label, uint64_t total, std::string unit)
    : label_(std::move(label)),
      unit_(std::move(unit)),
      total_(total),
      shown_at_all_(IsTerminal(STDERR_FILENO)),
      look_every_(std::max<uint64_t>(total / 4096, 1)) {
  current = this;
}

Progress::~Progress() {
  Hide();
  current = nullptr;
}

void Progress::Hide() {
  if (visible_) {
    PutText("\r\033[K");
    fflush(stderr);
    visible_ = false;
  }
}

void Progress::Look(uint64_t done) {
  next_look_ = done + look_every_;
  const Clock::time_point now = Clock::now();
  if (now < next_show_) {
    return;
  }
  next_show_ = now + kBetweenShows;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  std::string line = Line(done, seconds);
  line.resize(std::min<size_t>(line.size(), static_cast<size_t>(TerminalWidth(STDERR_FILENO)) - 1));
  PutText(fmt::format("\r{}\033[K", line));
  fflush(stderr);
  visible_ = true;
}

std::string Progress::Line(uint64_t done, double seconds) const {
  const double rate = static_cast<double>(done) / seconds;
  const std::string speed = unit_ == "B" ? fmt::format("{:.1f} MB/s", rate / 1e6)
                                         : fmt::format("{:.0f} {}/s", rate, unit_);
  if (total_ == 0) {
    return fmt::format("{}  {}", label_, speed);
  }
  const uint64_t left = total_ - std::min(done, total_);
  const double percent = 100.0 * static_cast<double>(total_ - left) / static_cast<double>(total_);
  std::string line = fmt::format("{}  {:3.0f} %  {}", label_, percent, speed);
  if (rate > 0) {
    line += fmt::format("  {} left", Duration(static_cast<double>(left) / rate));
  }
  return line;
}

void HideProgress() {
  if (current != nullptr) {
    current->Hide();
  }
}

}  // namespace tool
