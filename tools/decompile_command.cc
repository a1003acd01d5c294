// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/output_file.h"
#include "tools/cli/report.h"
#include "tools/cli/tvb_file.h"
#include "tools/decompile.h"
#include "tvb/checker.h"

namespace tool {
namespace {

struct DecompileOptions {
  std::string input;
  std::string output = "-";
  bool force = false;
};

// Throws Failure for the first error. With `force` only what is broken is refused: of the rest an
// SVF can be made that does what the player does.
void RefuseErrors(TvbFile &file, bool force) {
  const auto refuse = [&file, force](const tvb::Finding &finding) {
    const std::string place = file.Place(finding.offset, finding.record);
    if (finding.severity == tvb::Severity::kBroken) {
      throw Failure(finding.message, place);
    }
    if (finding.severity == tvb::Severity::kError && !force) {
      throw Failure(finding.message + " (--force goes by what the player makes of it)", place);
    }
    if (finding.severity == tvb::Severity::kError) {
      Warning(place, finding.message);
    }
  };
  tvb::CheckImage(file.image(), refuse, [&file](uint64_t offset) { file.Forget(offset); });
}

int Run(const DecompileOptions &options) {
  TvbFile file(options.input);
  RefuseErrors(file, options.force);
  OutputFile out(options.output);
  Decompile(file, out);
  out.Commit();
  return kDone;
}

}  // namespace

void AddDecompile(CLI::App &app, Invocation &invocation) {
  CLI::App *decompile = app.add_subcommand("decompile", "Make an SVF file of a TVB file");
  const auto options = std::make_shared<DecompileOptions>();
  decompile->add_option("IN.tvb", options->input, "The file to read; - is standard input")
      ->required();
  decompile->add_option("-o,--output", options->output, "The SVF to write; - is standard output")
      ->type_name("OUT.svf")
      ->capture_default_str();
  decompile->add_flag("--force", options->force,
                      "Take errors as the player does, where there is something that it does");
  decompile->callback(
      [options, &invocation] { invocation.run = [options] { return Run(*options); }; });
}

}  // namespace tool
