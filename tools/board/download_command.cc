// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `download`: plays files on this machine's chain.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/board/device.h"
#include "tools/board/download.h"
#include "tools/board/download_view.h"
#include "tools/board/probe.h"
#include "tools/cli/command.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tools/compile/opening.h"
#include "tools/rehearse/explain.h"
#include "tools/rehearse/play_input.h"
#include "tvb/checker.h"
#include "tvb/play_order.h"
#include "tvb/wait_splitter.h"

namespace tool {
namespace {

// The kernel complains of a processor that a run-test holds for many seconds.
constexpr uint64_t kMaxUnsplitMilliseconds = 1000;
constexpr uint64_t kPieceMilliseconds = 20;

struct DownloadOptions {
  std::string device;  // empty: to be found
  std::string log;
  std::optional<RequiredIdcode> idcode;
  PlayInputOptions inputs;
  bool json = false;
};

// Whether a file has no errors; tells all findings.
bool IsGood(const TvbFile &file) {
  const auto report = [&file](const tvb::Finding &finding) { TellFinding(file, finding); };
  return tvb::CheckImage(file.image(), report).errors == 0;
}

// Throws Failure, after its findings, if one of the files has errors: nothing is driven then.
void RefuseBad(const std::vector<PlayInput> &files) {
  const TvbFile *bad = nullptr;
  for (const PlayInput &input : files) {
    bad = IsGood(*input.file) ? bad : input.file.get();
  }
  if (bad != nullptr) {
    throw Failure("not downloaded, since the file has errors", bad->name());
  }
}

class Downloads {
 public:
  Downloads(const DownloadOptions &options, std::vector<PlayInput> files)
      : device_(options.device), view_(options.json), files_(std::move(files)) {}

  // Reads the IDCODE where the files have their targets. Throws Failure for another chip.
  void RequireIdcode(const RequiredIdcode &required, const std::string &log) const {
    for (const PlayInput &input : files_) {
      const TvbFile &file = *input.file;
      const uint32_t idcode = ProbeIdcode(device_, log, tvb::TargetOf(file.image(), file.header()));
      const std::string why = WhyNoIdcode(idcode);
      if (!why.empty()) {
        throw Failure(why, file.name());
      }
      if (((idcode ^ required.value) & required.mask) != 0) {
        throw Failure(fmt::format("not downloaded, since it is another chip: its IDCODE is {:08X} "
                                  "instead of {:08X} under the mask {:08X}",
                                  idcode, required.value, required.mask),
                      file.name());
      }
    }
  }

  // Downloads one file after the other, up to the first that fails. Returns the exit code.
  int Run() {
    for (size_t i = 0; i < files_.size(); ++i) {
      const DownloadEnd end = Download(*files_[i].file);
      if (end.code == kDone) {
        continue;
      }
      TellEnd(i, end);
      if (i + 1 < files_.size()) {
        Note(files_[i + 1].file->name(), "not downloaded, since the file before it was not");
      }
      return end.code;
    }
    return kDone;
  }

 private:
  DownloadEnd Download(const TvbFile &file) {
    total_ = tvb::DownloadClocks(file.image(), file.header());
    const tvb::Buffer split = SplitLongWaits(file);
    view_.Begin(file.name(), total_);
    const DownloadEnd end =
        DownloadImage(device_, file.name(), split.empty() ? file.image() : tvb::Bytes(split),
                      total_, [this](const BoardStatus &status) { view_.Update(status); });
    view_.End(end);
    return end;
  }

  // The file with its long run-tests in pieces, if it has any. It takes the same clocks, so a
  // failure can be explained by the file itself.
  tvb::Buffer SplitLongWaits(const TvbFile &file) const {
    const uint64_t split =
        tvb::SplitWaits(file.image(), file.header(), kMaxUnsplitMilliseconds).split;
    if (split == 0) {
      return {};
    }
    tvb::Buffer image = tvb::SplitWaits(file.image(), file.header(), kPieceMilliseconds).image;
    if (tvb::DownloadClocks(image, file.header()) != total_) {
      Warning(file.name(),
              fmt::format("{} of more than a second will hold a processor: in pieces, the file "
                          "would take other clocks",
                          CountText(split, "run-test")));
      return {};
    }
    Note(file.name(), fmt::format("{} of more than a second, played in pieces of {} ms",
                                  CountText(split, "run-test"), kPieceMilliseconds));
    return image;
  }

  void TellEnd(size_t i, const DownloadEnd &end) {
    const std::string &name = files_[i].file->name();
    const std::string clock =
        fmt::format("clock {} of {}", NumberText(end.status.clocks), NumberText(total_));
    if (end.left) {
      Warning(name, "not waited for: the download may still run, see tvb status");
    } else if (end.code == kCancelled) {
      Error(name, fmt::format("cancelled at {}", clock));
    } else if (end.code == kBad) {
      Error(name, fmt::format("not played: {}; see the kernel log", end.status.error));
    } else if (end.status.EndedComparing()) {
      Error(name, fmt::format("failed at {}", clock));
      Explain(i, *end.status.last_read);
    } else {
      Error(name, fmt::format("failed at {}, not by a comparison: {}; see the kernel log", clock,
                              end.status.error));
    }
  }

  // The file that failed, and those downloaded before it.
  void Explain(size_t failed, const BoardRead &read) {
    files_.erase(files_.begin() + static_cast<std::ptrdiff_t>(failed) + 1, files_.end());
    ExplainRead(files_, read);
  }

  const Device device_;
  DownloadView view_;
  std::vector<PlayInput> files_;
  uint64_t total_ = 0;  // clocks of the file that is or was downloaded
};

int Download(const DownloadOptions &options) {
  PlayInputs inputs(options.inputs);
  RefuseBad(inputs.files());
  Downloads downloads(options, inputs.TakeFiles());
  // Over all of them: a signal in the last wait of one keeps the next from being played.
  const Interrupts interrupts;
  if (options.idcode) {
    downloads.RequireIdcode(*options.idcode, options.log);
  }
  return downloads.Run();
}

}  // namespace

void AddDownload(CLI::App &app, Invocation &invocation) {
  CLI::App *download =
      app.add_subcommand("download", "Download files to this board's chain, and watch");
  const auto options = std::make_shared<DownloadOptions>();
  AddInputs(*download, invocation, "IN.tvb", options->inputs.paths,
            "TVB files to download, one after the other, or SVF files, which are compiled first; - "
            "is standard input");
  AddDevice(*download, options->device);
  AddInput(*download, invocation, "--map", options->inputs.map,
           "Name the line of the SVF where a comparison fails; the map is from tvb compile --map");
  download
      ->add_option_function<std::string>(
          "--idcode", [options](const std::string &text) { options->idcode = ParseIdcode(text); },
          "Read the target's IDCODE first, and download nothing to another chip; hexadecimal")
      ->check(CheckIdcode)
      ->type_name("IDCODE[/MASK]");
  AddKernelLog(*download, options->log);
  download->add_flag("--json", options->json, "Print a JSON object a line, for other programs");
  download->callback([options, &invocation] {
    options->inputs.quiet = true;
    invocation.run = [options] { return Download(*options); };
  });
}

}  // namespace tool
