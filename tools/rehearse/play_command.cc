// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <CLI/CLI.hpp>
#include <algorithm>
#include <initializer_list>
#include <memory>

#include "tools/cli/command.h"
#include "tools/rehearse/play.h"

namespace tool {
namespace {

constexpr uint64_t kMostPinNs = 1000000000;
constexpr uint64_t kMostIdle = 1000000000000;

// What is wrong with the options together; empty if nothing is.
std::string Conflict(const PlayOptions &options) {
  const std::initializer_list<std::string> outputs = {options.vcd, options.scans, options.memory};
  if (std::count(outputs.begin(), outputs.end(), "-") > 1) {
    return "only one of --vcd, --scans and --memory can be standard output";
  }
  if (!options.memory.empty() && options.chain.empty()) {
    return "--memory needs --chain: an echo has no memory";
  }
  if (options.input == "-" && options.chain == "-") {
    return "only one of the file and --chain can be standard input";
  }
  return "";
}

}  // namespace

void AddPlay(CLI::App &app, Invocation &invocation) {
  CLI::App *play = app.add_subcommand("play", "Rehearse a download with the driver's own code");
  const auto options = std::make_shared<PlayOptions>();
  const auto fail_at = std::make_shared<std::string>();
  play->add_option("IN.tvb", options->input, "The file to play; - is standard input")->required();
  CLI::Option *chain =
      play->add_option("--chain", options->chain, "Play to the simulated chain of this JSON file")
          ->type_name("FILE");
  play->add_flag("--echo")
      ->description("Play to a target that answers what the file expects (the default)")
      ->excludes(chain);
  play->add_option("--fail-at", *fail_at,
                   "Invert a bit that is read: of a scan of the file, from 1, a bit, from 0")
      ->type_name("SCAN:BIT");
  play->add_option("--vcd", options->vcd, "Write the lines and the TAP state as a waveform")
      ->type_name("FILE");
  play->add_option("--vcd-idle", options->vcd_idle,
                   "Draw no more than this many clocks of a stay in Run-Test/Idle; 0 is all")
      ->capture_default_str()
      ->check(CLI::Range(uint64_t{0}, kMostIdle))
      ->type_name("CLOCKS");
  play->add_option("--scans", options->scans, "Write the scans as text")->type_name("FILE");
  play->add_option("--memory", options->memory,
                   "Write the chain's configuration memory at the end as text")
      ->type_name("FILE");
  play->add_flag("--time", options->time, "Tell what the download takes on a board");
  play->add_option("--pin-ns", options->pin_ns, "What a pin call takes, in nanoseconds")
      ->capture_default_str()
      ->check(CLI::Range(uint64_t{1}, kMostPinNs));
  play->callback([options, fail_at, &invocation] {
    options->fail_at = ParseFailAt(*fail_at);
    if (!fail_at->empty() && !options->fail_at) {
      throw CLI::ValidationError("--fail-at",
                                 "expected SCAN:BIT, scans from 1 and bits from 0, as in 12:31");
    }
    if (const std::string conflict = Conflict(*options); !conflict.empty()) {
      throw CLI::ValidationError("play", conflict);
    }
    invocation.run = [options] { return Play(*options); };
  });
}

}  // namespace tool
