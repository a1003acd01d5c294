// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/progress.h"
#include "tools/cli/report.h"
#include "tools/cli/tvb_file.h"
#include "tvb/checker.h"
#include "tvb/text.h"

namespace tool {
namespace {

struct CheckOptions {
  std::string input;
  bool strict = false;
};

std::string CountOrNo(uint64_t count, const char *noun) {
  return count == 0 ? fmt::format("no {}s", noun) : tvb::Count(count, noun);
}

std::string Summary(const tvb::CheckResult &result) {
  std::string text =
      fmt::format("{}, {}, {}", tvb::Count(result.records, "record"),
                  CountOrNo(result.errors, "error"), CountOrNo(result.warnings, "warning"));
  if (result.unchecked != 0) {
    text += fmt::format("; the last {} could not be checked", tvb::Count(result.unchecked, "byte"));
  }
  return text;
}

int Check(const CheckOptions &options) {
  TvbFile file(options.input);
  Progress progress("check", file.image().size());
  auto report = [&file](const tvb::Finding &finding) {
    auto print = finding.severity == tvb::Severity::kWarning ? Warning : Error;
    print(file.Place(finding.offset, finding.record), finding.message);
  };
  const tvb::CheckResult result = tvb::CheckImage(file.image(), report, [&](uint64_t offset) {
    progress.Update(offset);
    file.Forget(offset);
  });
  progress.Hide();
  fmt::print("{}: {}\n", file.name(), Summary(result));
  return result.errors > 0 || (options.strict && result.warnings > 0) ? kFailed : kDone;
}

}  // namespace

void AddCheck(CLI::App &app, Invocation &invocation) {
  CLI::App *check = app.add_subcommand("check", "Find what is wrong with a TVB file");
  const auto options = std::make_shared<CheckOptions>();
  check->add_option("IN.tvb", options->input, "The file to check; - is standard input")->required();
  check->add_flag("--strict", options->strict, "Warnings fail the check too");
  check->callback(
      [options, &invocation] { invocation.run = [options] { return Check(*options); }; });
}

}  // namespace tool
