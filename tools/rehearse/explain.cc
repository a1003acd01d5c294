// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/explain.h"

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "tools/cli/command.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tools/rehearse/rehearsal.h"
#include "tools/rehearse/verdict.h"

namespace tool {
namespace {

class Explanation {
 public:
  Explanation(const std::vector<PlayInput> &files, const BoardRead &read)
      : files_(files),
        read_(read),
        rehearsal_(files.front().file->image(), files.front().file->header(), nullptr, {},
                   {[](uint64_t, std::string_view) {}, nullptr, nullptr}) {}

  int Tell() {
    for (const PlayInput &input : files_) {
      const bool played = Play(input);
      if (!played && &input != &files_.back()) {
        return TellVerdict(rehearsal_, input);
      }
    }
    rehearsal_.End();
    return TellLast();
  }

 private:
  const TvbFile &last() const {
    return *files_.back().file;
  }

  // Returns whether the driver has played the file to its end.
  bool Play(const PlayInput &input) {
    if (&input != &files_.front()) {
      rehearsal_.Next(input.file->image(), input.file->header());
    }
    if (&input == &files_.back()) {
      rehearsal_.InvertRead(read_.clock);
    }
    Progress progress("explain", &input == &files_.back() ? read_.clock : 0, "clocks");
    rehearsal_.Run({[&] { progress.Update(rehearsal_.counts().all_clocks()); }});
    return rehearsal_.result().done && rehearsal_.result().stop == DriverStop::kNothing;
  }

  int TellLast() {
    const std::optional<Mismatch> &mismatch = rehearsal_.mismatch();
    if (!mismatch) {
      return TellNoMismatch();
    }
    if (read_.level && *read_.level != mismatch->read[mismatch->bit]) {
      Error(last().Where(mismatch->offset, mismatch->record),
            fmt::format("the comparison at clock {} held: the file expects {}, which was read",
                        NumberText(read_.clock), int(*read_.level)));
      return kFailed;
    }
    TellVerdict(rehearsal_, files_.back());
    Note(last().name(),
         "of this scan only the level read last is known: its other bits are shown as expected");
    return kDone;
  }

  // The driver went on after the read.
  int TellNoMismatch() {
    const int code = TellVerdict(rehearsal_, files_.back());
    if (code != kDone) {
      return code;
    }
    const uint64_t clocks = rehearsal_.counts().all_clocks();
    Error(last().name(),
          read_.clock < clocks
              ? fmt::format("the file compares nothing at clock {}", NumberText(read_.clock))
              : fmt::format("the file has no clock {}: its download takes {}",
                            NumberText(read_.clock), CountText(clocks, "clock")));
    return kFailed;
  }

  const std::vector<PlayInput> &files_;
  const BoardRead &read_;
  Rehearsal rehearsal_;
};

}  // namespace

int ExplainRead(const std::vector<PlayInput> &files, const BoardRead &read) {
  return Explanation(files, read).Tell();
}

}  // namespace tool
