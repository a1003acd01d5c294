// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `play`: rehearses a download.
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/output_file.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tools/rehearse/play_input.h"
#include "tools/rehearse/play_report.h"
#include "tools/rehearse/rehearsal.h"
#include "tools/rehearse/target_chain.h"
#include "tools/rehearse/verdict.h"
#include "tools/report/page.h"
#include "tvb/play_order.h"

namespace tool {
namespace {

constexpr uint64_t kMaxIdleClocks = 1000000000000;

struct PlayOptions {
  PlayInputOptions inputs;
  std::string chain;  // the file that describes the target; empty: an echo
  std::string vcd;    // output files; empty: none
  std::string scans;
  std::string memory;
  std::string report;
  bool time = false;
  RehearsalOptions rehearsal;
};

bool ReadNumber(const char *&at, const char *end, uint64_t &number) {
  const std::from_chars_result result = std::from_chars(at, end, number);
  const bool good = result.ec == std::errc() && result.ptr != at;
  at = result.ptr;
  return good;
}

// Parses "SCAN:BIT". None if the text has another form.
std::optional<FailAt> ParseFailAt(const std::string &text) {
  FailAt fail_at;
  const char *at = text.data();
  const char *end = at + text.size();
  const bool good = ReadNumber(at, end, fail_at.scan) && at != end && *at++ == ':' &&
                    ReadNumber(at, end, fail_at.bit) && at == end && fail_at.scan > 0;
  return good ? std::optional<FailAt>(fail_at) : std::nullopt;
}

// The output files of a rehearsal.
class Outputs {
 public:
  explicit Outputs(const PlayOptions &options)
      : vcd_(Open(options.vcd)),
        scans_(Open(options.scans)),
        memory_(Open(options.memory)),
        report_(Open(options.report)) {}

  // The stream for text output.
  static FILE *Screen(const PlayOptions &options) {
    const bool taken = options.vcd == "-" || options.scans == "-" || options.memory == "-" ||
                       options.report == "-";
    return taken ? stderr : stdout;
  }

  TextSink VcdSink() const {
    return SinkOf(vcd_.get());
  }
  TextSink ScanSink() const {
    return SinkOf(scans_.get());
  }

  // `report`: null if none is wanted.
  void Finish(ChainTarget *chain, const ReportData *report) {
    if (memory_ && chain != nullptr) {
      memory_->Write(chain->Memory());
    }
    if (report_ && report != nullptr) {
      WritePage(*report, SinkOf(report_.get()));
    }
    for (OutputFile *file : {vcd_.get(), scans_.get(), memory_.get(), report_.get()}) {
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
  std::unique_ptr<OutputFile> report_;
};

std::unique_ptr<ChainTarget> OpenChain(const std::string &path) {
  if (path.empty()) {
    return nullptr;
  }
  const InputFile file(path);
  return std::make_unique<ChainTarget>(ParseChain(file.text(), file.name()), file.name());
}

std::unique_ptr<PlayReport> OpenReport(const PlayOptions &options) {
  if (options.report.empty()) {
    return nullptr;
  }
  const std::string target =
      options.chain.empty() ? "an echo of the file: every answer is what the file expects"
                            : fmt::format("the simulated chain {}", PrintableText(options.chain));
  return std::make_unique<PlayReport>(target, options.rehearsal.pin_ns);
}

// Plays with a progress line.
void RunWatched(Rehearsal &rehearsal, const TvbFile &file) {
  const bool shown = IsTerminal(STDERR_FILENO);
  const tvb::PlayLength length =
      shown ? tvb::MeasurePlay(file.image(), file.header()) : tvb::PlayLength();
  Progress progress("play", length.clocks, "clocks");
  const Rehearsal &seen = rehearsal;
  rehearsal.Run({[&] {
    progress.Relabel(
        fmt::format("play  record {} of {}", seen.playhead().records(), length.records));
    progress.Update(seen.counts().all_clocks());
  }});
}

void IgnoreLog(uint64_t /*time*/, std::string_view /*message*/) {}

DriverLog::Sink LogTo(FILE *screen) {
  return [screen](uint64_t time, std::string_view message) {
    HideProgress();
    fmt::print(screen, "[{:5}.{:06}] {}\n", time / 1000000000, time / 1000 % 1000000, message);
    fflush(screen);
  };
}

// Throws Failure unless there is one file, which has that bit and compares it.
void RefuseFailAt(const FailAt &fail_at, const std::vector<PlayInput> &files) {
  if (files.size() > 1) {
    throw Failure("--fail-at: name one file; scans are counted in each by itself");
  }
  const TvbFile &file = *files.front().file;
  const auto record = tvb::FindScan(file.image(), file.header(), fail_at.scan);
  if (!record) {
    throw Failure(fmt::format("--fail-at: the file has no scan {}", fail_at.scan), file.name());
  }
  const std::string place = file.Where(record->offset, record->index);
  if (fail_at.bit >= record->bits()) {
    throw Failure(fmt::format("--fail-at: scan {} has no bit {}; it has {}", fail_at.scan,
                              fail_at.bit, CountText(record->bits(), "bit")),
                  place);
  }
  FileScan scan;
  scan.mask = tvb::FieldData(file.image(), *record, tvb::kTagMask);
  if (!scan.Compares(static_cast<uint32_t>(fail_at.bit))) {
    throw Failure(
        fmt::format("--fail-at: nothing compares bit {} of scan {}", fail_at.bit, fail_at.scan),
        place);
  }
}

// Warns if the driver stopped before the bit to be inverted.
void WarnOfFailAt(const Rehearsal &rehearsal, const FailAt &fail_at, const TvbFile &file) {
  if (!rehearsal.failed_as_asked()) {
    Warning(file.name(), fmt::format("scan {} bit {} was not reached, so nothing was inverted",
                                     fail_at.scan, fail_at.bit));
  }
}

PlayedFile PartOf(const PlayInput &input) {
  return {input.file->name(), input.file->image(), input.file->header(), &input};
}

// Plays one file after the other, up to the first that fails, and unloads the driver. Returns the
// exit code, appends a summary of each, and shows all to `report`, if there is one.
int PlayFiles(Rehearsal &rehearsal, const std::vector<PlayInput> &files, PlayReport *report,
              std::string &summaries) {
  int code = kDone;
  size_t played = 0;
  for (size_t i = 0; i < files.size() && code == kDone; ++i, ++played) {
    const TvbFile &file = *files[i].file;
    if (i > 0) {
      rehearsal.Next(file.image(), file.header());
    }
    if (report != nullptr) {
      report->Begin(PartOf(files[i]), rehearsal);
    }
    RunWatched(rehearsal, file);
    const DriverResult &result = rehearsal.result();
    if (i + 1 == files.size() || !result.done || result.stop != DriverStop::kNothing) {
      rehearsal.End();
    }
    code = TellVerdict(rehearsal, files[i]);
    if (report != nullptr) {
      report->End(rehearsal, code);
    }
    summaries += files.size() == 1 ? "" : fmt::format("{}: ", file.name());
    summaries += Summary(rehearsal, code);
    if (code != kDone && i + 1 < files.size()) {
      Note(files[i + 1].file->name(), "not played, since the file before it failed");
    }
  }
  for (size_t i = played; report != nullptr && i < files.size(); ++i) {
    report->Skip(PartOf(files[i]));
  }
  return code;
}

// Plays the files and returns the exit code. The driver's log and the result, unless quiet, and
// the times go to standard output, or to standard error if one of the output files is standard
// output; errors and warnings go to standard error. Throws Failure if a file is bad.
int Play(const PlayOptions &options) {
  const PlayInputs inputs(options.inputs);
  const std::vector<PlayInput> &files = inputs.files();
  const TvbFile &first = *files.front().file;
  if (options.rehearsal.fail_at) {
    RefuseFailAt(*options.rehearsal.fail_at, files);
  }
  const std::unique_ptr<ChainTarget> chain = OpenChain(options.chain);
  Outputs outputs(options);
  FILE *const screen = Outputs::Screen(options);
  const std::unique_ptr<PlayReport> report = OpenReport(options);
  DriverLog::Sink log = options.inputs.quiet ? DriverLog::Sink(IgnoreLog) : LogTo(screen);

  Rehearsal rehearsal(first.image(), first.header(), chain.get(), options.rehearsal,
                      {report ? report->TakeLog(std::move(log)) : std::move(log), outputs.VcdSink(),
                       outputs.ScanSink()});
  std::string summaries;
  const int code = PlayFiles(rehearsal, files, report.get(), summaries);
  if (options.rehearsal.fail_at) {
    WarnOfFailAt(rehearsal, *options.rehearsal.fail_at, first);
  }
  outputs.Finish(chain.get(), report ? &report->Finish(rehearsal) : nullptr);
  if (!options.inputs.quiet) {
    fmt::print(screen, "{}", summaries);
  }
  if (options.time) {
    fmt::print(screen, "{}",
               TimeTable(rehearsal.all_counts(), rehearsal.clock(), options.rehearsal.pin_ns));
  }
  return code;
}

std::string CheckFailAt(const std::string &text) {
  return ParseFailAt(text) ? "" : "expected SCAN:BIT, scans from 1 and bits from 0, as in 12:31";
}

std::string CheckStateForm(const std::string &name) {
  return FindStateForm(name) ? "" : fmt::format("expected none, bits or string; found '{}'", name);
}

void AddFiles(CLI::App &play, Invocation &invocation, PlayOptions &options) {
  AddInputs(play, invocation, "IN.tvb", options.inputs.paths,
            "TVB files to play, one after the other, by the same driver, or SVF files, which are "
            "compiled first; - is standard input");
  AddInput(play, invocation, "--map", options.inputs.map,
           "Name the line of the SVF where a comparison fails; the map is from tvb compile --map");
  CLI::Option *chain = AddInput(play, invocation, "--chain", options.chain,
                                "Play to the simulated chain that this JSON file describes");
  play.add_flag("--echo")
      ->description("Play to a target that answers what the file expects (the default)")
      ->excludes(chain);
  AddOutput(play, invocation, "--vcd", options.vcd,
            "Write the lines and the TAP state as a waveform");
  AddOutput(play, invocation, "--scans", options.scans, "Write the scans as text, one a line");
  AddOutput(play, invocation, "--memory", options.memory,
            "Write the chain's configuration memory at the end, as text")
      ->needs(chain);
  AddOutput(play, invocation, "--report", options.report,
            "Write a page to look at: verdict, timeline, records, and where it failed (HTML)");
}

void AddWaveform(CLI::App &play, PlayOptions &options) {
  play.add_option("--vcd-idle", options.rehearsal.vcd_idle,
                  "Draw at most this many clocks of each stay in Run-Test/Idle; 0 draws all")
      ->capture_default_str()
      ->check(CLI::Range(uint64_t{0}, kMaxIdleClocks).description(""))
      ->type_name("CLOCKS");
  play.add_option_function<std::string>(
          "--vcd-state",
          [&options](const std::string &name) {
            options.rehearsal.vcd_state = *FindStateForm(name);
          },
          "Draw the TAP state as: none, bits (its number, four wires) or string (its name, for "
          "viewers that "
          "can show it)")
      ->default_str("bits")
      ->check(CheckStateForm)
      ->type_name("FORM");
}

void AddRest(CLI::App &play, PlayOptions &options, std::string &fail_at) {
  play.add_option("--fail-at", fail_at,
                  "Invert one bit that is read: of a scan of the file, from 1, a bit, from 0")
      ->check(CheckFailAt)
      ->type_name("SCAN:BIT");
  AddWaveform(play, options);
  play.add_flag("--time", options.time, "Print what the download takes on a board");
  AddPinTime(play, options.rehearsal.pin_ns);
  play.add_flag("-q,--quiet", options.inputs.quiet,
                "Print neither the driver's log nor the summary");
}

}  // namespace

void AddPlay(CLI::App &app, Invocation &invocation) {
  CLI::App *play = app.add_subcommand("play", "Rehearse a download with the driver's own code");
  const auto options = std::make_shared<PlayOptions>();
  const auto fail_at = std::make_shared<std::string>();
  AddFiles(*play, invocation, *options);
  play->add_flag("--pause-as-idle", options->inputs.pause_as_idle,
                 "In SVF files, use Run-Test/Idle for every pause that has no form in a TVB file");
  AddRest(*play, *options, *fail_at);
  play->callback([options, fail_at, &invocation] {
    options->rehearsal.fail_at = ParseFailAt(*fail_at);
    invocation.run = [options] { return Play(*options); };
  });
}

}  // namespace tool
