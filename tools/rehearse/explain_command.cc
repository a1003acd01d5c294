// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `explain`.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/cli/command.h"
#include "tools/rehearse/explain.h"
#include "tools/rehearse/play_input.h"

namespace tool {
namespace {

struct ExplainOptions {
  PlayInputOptions inputs;
  BoardRead read;
};

int Explain(const ExplainOptions &options) {
  const PlayInputs inputs(options.inputs);
  return ExplainRead(inputs.files(), options.read);
}

}  // namespace

void AddExplain(CLI::App &app, Invocation &invocation) {
  CLI::App *explain = app.add_subcommand("explain", "Tell why a download on a board has failed");
  const auto options = std::make_shared<ExplainOptions>();
  AddInputs(*explain, invocation, "IN.tvb", options->inputs.paths,
            "The TVB file that failed, after those that were downloaded before it since the driver "
            "was loaded, if any; or SVF files, which are compiled first; - is standard input");
  explain
      ->add_option("--clock", options->read.clock,
                   "The clock of the last read: the first number of the attribute last_read")
      ->required()
      ->type_name("CLOCK");
  explain
      ->add_option_function<int>(
          "--read", [options](const int &level) { options->read.level = level == 1; },
          "What was read, 0 or 1: the second one")
      ->check(CLI::Range(0, 1).description(""))
      ->type_name("LEVEL");
  AddInput(*explain, invocation, "--map", options->inputs.map,
           "Name the line of the SVF where the comparison failed; the map is from tvb compile "
           "--map");
  explain->callback([options, &invocation] {
    options->inputs.quiet = true;
    invocation.run = [options] { return Explain(*options); };
  });
}

}  // namespace tool
