// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What a running command shows the user on standard error: messages and a progress line.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tool {

// Prints a message, "PLACE: error: TEXT"; an empty place stands for the program. `place` is
// "FILE:LINE:COLUMN" or "FILE: offset 0x1A2 (record 7)". The text says what was expected and what
// to do, starts in lower case and has no final period. On a terminal the kind is coloured, unless
// the variable NO_COLOR is set and not empty. Control characters are escaped. Hides the progress
// line first.
void Error(std::string_view place, std::string_view text);
void Warning(std::string_view place, std::string_view text);
void Note(std::string_view place, std::string_view text);

// Also gets every message while it lives, as it was printed: `kind` is "error", "warning" or
// "note". One listens at a time.
class MessageListener {
 public:
  using Take =
      std::function<void(std::string_view kind, std::string_view place, std::string_view text)>;

  explicit MessageListener(Take take);
  ~MessageListener();
  MessageListener(const MessageListener &) = delete;
  MessageListener &operator=(const MessageListener &) = delete;
};

// True if the file descriptor is a terminal that can do more than print lines (TERM is neither
// unset nor "dumb").
bool IsTerminal(int fd);

// A line that shows the progress of a long job: percent, rate, time left. It is shown only if
// standard error is a terminal, and only after the first second; the destructor removes it. At most
// one object exists at a time.
class Progress {
 public:
  // `label` names the job ("compile"); `total` is the number of steps, 0 if unknown. `unit` names a
  // step: "B" for bytes, whose rate is shown in MB/s, or anything else.
  Progress(std::string label, uint64_t total, std::string unit = "B");
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // Sets the number of steps done. Cheap enough to be called for every record. More than the total
  // shows as 100 %.
  void Update(uint64_t done) {
    if (shown_at_all_ && done >= next_look_) {
      Look(done);
    }
  }

  // Changes the label, which the next update shows however few steps are done.
  void Relabel(std::string label) {
    label_ = std::move(label);
    next_look_ = 0;
  }

  // Clears the line until the next update is due.
  void Hide();

 private:
  using Clock = std::chrono::steady_clock;

  void Look(uint64_t done);
  std::string Line(uint64_t done, double seconds) const;

  std::string label_;
  std::string unit_;
  uint64_t total_;
  bool shown_at_all_;
  bool visible_ = false;
  uint64_t next_look_ = 0;
  uint64_t look_every_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_show_ = start_ + std::chrono::seconds(1);
};

// Hides the progress line, if there is one, so that something else can be printed.
void HideProgress();

}  // namespace tool
