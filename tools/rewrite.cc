// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `rewrite`: a file with its long run-tests in pieces.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/output_file.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tvb/checker.h"
#include "tvb/wait_splitter.h"

namespace tool {
namespace {

struct RewriteOptions {
  std::string input;
  std::string output;
  uint32_t longest_wait = 20;  // milliseconds
};

int Rewrite(const RewriteOptions &options) {
  const TvbFile file(options.input);
  const auto report = [&file](const tvb::Finding &finding) { TellFinding(file, finding); };
  if (tvb::CheckImage(file.image(), report).errors > 0) {
    throw Failure("not rewritten, since the file has errors", file.name());
  }
  OutputFile output(options.output);
  const tvb::SplitFile split = tvb::SplitWaits(file.image(), file.header(), options.longest_wait);
  output.Write(split.image.data(), split.image.size());
  output.Commit();
  Note(file.name(), split.split == 0 ? "no run-test takes longer"
                                     : fmt::format("{} in pieces, the longest took {}",
                                                   CountText(split.split, "run-test"),
                                                   TimeText(1000 * split.longest_microseconds)));
  return kDone;
}

}  // namespace

void AddRewrite(CLI::App &app, Invocation &invocation) {
  CLI::App *rewrite = app.add_subcommand("rewrite", "Make the long run-tests of a TVB file short");
  const auto options = std::make_shared<RewriteOptions>();
  AddInput(*rewrite, invocation, "IN.tvb", options->input,
           "TVB file to rewrite; - is standard input");
  AddOutput(*rewrite, invocation, "OUT.tvb", options->output,
            "TVB file to write; - is standard output");
  rewrite
      ->add_option("--longest-wait", options->longest_wait,
                   "Write a run-test that takes longer than so many milliseconds in pieces")
      ->check(CLI::Range(1u, 1000000u).description(""))
      ->capture_default_str()
      ->type_name("MS");
  rewrite->callback(
      [options, &invocation] { invocation.run = [options] { return Rewrite(*options); }; });
}

}  // namespace tool
