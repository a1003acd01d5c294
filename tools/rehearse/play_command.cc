// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/cli/command.h"
#include "tools/rehearse/play.h"

namespace tool {
namespace {

constexpr uint64_t kMaxIdleClocks = 1000000000000;

std::string CheckFailAt(const std::string &text) {
  return ParseFailAt(text) ? "" : "expected SCAN:BIT, scans from 1 and bits from 0, as in 12:31";
}

void AddFiles(CLI::App &play, Invocation &invocation, PlayOptions &options) {
  AddInput(play, invocation, "IN.tvb", options.input, "TVB file to play; - is standard input");
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
}

void AddRest(CLI::App &play, PlayOptions &options, std::string &fail_at) {
  play.add_option("--fail-at", fail_at,
                  "Invert one bit that is read: of a scan of the file, from 1, a bit, from 0")
      ->check(CheckFailAt)
      ->type_name("SCAN:BIT");
  play.add_option("--vcd-idle", options.vcd_idle,
                  "Draw at most this many clocks of each stay in Run-Test/Idle; 0 draws all")
      ->capture_default_str()
      ->check(CLI::Range(uint64_t{0}, kMaxIdleClocks).description(""))
      ->type_name("CLOCKS");
  play.add_flag("--time", options.time, "Print what the download takes on a board");
  AddPinTime(play, options.pin_ns);
}

}  // namespace

void AddPlay(CLI::App &app, Invocation &invocation) {
  CLI::App *play = app.add_subcommand("play", "Rehearse a download with the driver's own code");
  const auto options = std::make_shared<PlayOptions>();
  const auto fail_at = std::make_shared<std::string>();
  AddFiles(*play, invocation, *options);
  AddRest(*play, *options, *fail_at);
  play->callback([options, fail_at, &invocation] {
    options->fail_at = ParseFailAt(*fail_at);
    invocation.run = [options] { return Play(*options); };
  });
}

}  // namespace tool
