// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/play.h"

#include <fmt/format.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/output_file.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tools/rehearse/play_length.h"
#include "tools/rehearse/play_verdict.h"
#include "tools/rehearse/rehearsal.h"
#include "tools/rehearse/time_table.h"

namespace tool {
namespace {

bool ReadNumber(const char *&at, const char *end, uint64_t &number) {
  const std::from_chars_result result = std::from_chars(at, end, number);
  const bool good = result.ec == std::errc() && result.ptr != at;
  at = result.ptr;
  return good;
}

// The files that a rehearsal writes.
class Outputs {
 public:
  explicit Outputs(const PlayOptions &options)
      : vcd_(Open(options.vcd)), scans_(Open(options.scans)), memory_(Open(options.memory)) {}

  // Where text for people goes.
  static FILE *Screen(const PlayOptions &options) {
    const bool taken = options.vcd == "-" || options.scans == "-" || options.memory == "-";
    return taken ? stderr : stdout;
  }

  TextSink VcdSink() const {
    return SinkOf(vcd_.get());
  }
  TextSink ScanSink() const {
    return SinkOf(scans_.get());
  }

  void Finish(ChainTarget *chain) {
    if (memory_ && chain != nullptr) {
      memory_->Write(chain->Memory());
    }
    for (OutputFile *file : {vcd_.get(), scans_.get(), memory_.get()}) {
      if (file != nullptr) {
        file->Commit();
      }
    }
  }

 private:
  static std::unique_ptr<OutputFile> Open(const std::string &path) {
    return path.empty() ? nullptr : std::make_unique<OutputFile>(path);
  }
  static TextSink SinkOf(OutputFile *file) {
    if (file == nullptr) {
      return nullptr;
    }
    return [file](std::string_view text) { file->Write(text); };
  }

  std::unique_ptr<OutputFile> vcd_;
  std::unique_ptr<OutputFile> scans_;
  std::unique_ptr<OutputFile> memory_;
};

std::unique_ptr<ChainTarget> OpenChain(const std::string &path) {
  if (path.empty()) {
    return nullptr;
  }
  const InputFile file(path);
  return std::make_unique<ChainTarget>(ParseChain(file.text(), file.name()), file.name());
}

// Plays, with a line that tells how far it is.
void RunWatched(Rehearsal &rehearsal, const TvbFile &file) {
  const bool shown = IsTerminal(STDERR_FILENO);
  const PlayLength length = shown ? MeasurePlay(file.image(), file.header()) : PlayLength();
  Progress progress("play", length.clocks, "clocks");
  rehearsal.Run([&] {
    rehearsal.playhead().CatchUp();
    progress.Relabel(
        fmt::format("play  record {} of {}", rehearsal.playhead().records(), length.records));
    progress.Update(AllClocks(rehearsal.counts_now()));
  });
}

std::string Summary(const Rehearsal &rehearsal, const Playhead &playhead, int code) {
  const char *verdict = code != kDone                    ? "failed"
                        : playhead.compared_scans() == 0 ? "done, nothing is compared"
                                                         : "done, every comparison held";
  return fmt::format("{}, {} ({} compared), {}: {}\n", CountText(playhead.records(), "record"),
                     CountText(playhead.scans(), "scan"), NumberText(playhead.compared_scans()),
                     CountText(AllClocks(rehearsal.counts()), "clock"), verdict);
}

DriverLog::Sink LogTo(FILE *screen) {
  return [screen](uint64_t time, std::string_view line) {
    HideProgress();
    fmt::print(screen, "[{:5}.{:06}] {}\n", time / 1000000000, time / 1000 % 1000000, line);
    fflush(screen);
  };
}

}  // namespace

std::optional<FailAt> ParseFailAt(const std::string &text) {
  FailAt fail_at;
  const char *at = text.data();
  const char *end = at + text.size();
  const bool good = ReadNumber(at, end, fail_at.scan) && at != end && *at++ == ':' &&
                    ReadNumber(at, end, fail_at.bit) && at == end && fail_at.scan > 0;
  return good ? std::optional<FailAt>(fail_at) : std::nullopt;
}

int Play(const PlayOptions &options) {
  const TvbFile file(options.input);
  if (file.image().size() > UINT32_MAX) {
    throw Failure("the file is too long: the driver takes less than 4 GiB", file.name());
  }
  const std::unique_ptr<ChainTarget> chain = OpenChain(options.chain);
  Outputs outputs(options);
  FILE *const screen = Outputs::Screen(options);

  Rehearsal rehearsal(file.image(), file.header(), chain.get(), options,
                      {LogTo(screen), outputs.VcdSink(), outputs.ScanSink()});
  RunWatched(rehearsal, file);
  outputs.Finish(chain.get());
  const int code = TellVerdict(rehearsal, file);
  if (!rehearsal.failed_as_asked()) {
    Warning(file.name(), fmt::format("scan {} bit {} was not reached, so nothing was inverted",
                                     options.fail_at->scan, options.fail_at->bit));
  } else if (options.fail_at && code == kDone) {
    Warning(file.name(), fmt::format("scan {} bit {} was inverted, but nothing compares it",
                                     options.fail_at->scan, options.fail_at->bit));
  }
  fmt::print(screen, "{}", Summary(rehearsal, rehearsal.playhead(), code));
  if (options.time) {
    fmt::print(screen, "{}", TimeTable(rehearsal.counts(), rehearsal.clock(), options.pin_ns));
  }
  return code;
}

}  // namespace tool
