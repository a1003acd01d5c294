// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `check`.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tvb/checker.h"

namespace tool {
namespace {

struct CheckOptions {
  std::vector<std::string> inputs;
  bool strict = false;
};

std::string CountOrNo(uint64_t count, const char *noun) {
  return count == 0 ? fmt::format("no {}s", noun) : CountText(count, noun);
}

std::string Summary(const tvb::CheckResult &result) {
  const std::string text = fmt::format(
      "{}, {}, {}, {}", CountText(result.records, "record"), CountOrNo(result.errors, "error"),
      CountOrNo(result.warnings, "warning"), tvb::SealText(result.seal));
  return result.unchecked == 0 ? text
                               : fmt::format("{}; the last {} could not be checked", text,
                                             CountText(result.unchecked, "byte"));
}

int CheckFile(const std::string &path, bool strict) {
  TvbFile file(path);
  Progress progress("check", file.image().size());
  const auto report = [&file](const tvb::Finding &finding) { TellFinding(file, finding); };
  const tvb::CheckResult result = tvb::CheckImage(file.image(), report, [&](uint64_t offset) {
    progress.Update(offset);
    file.Forget(offset);
  });
  progress.Hide();
  fmt::print("{}: {}\n", file.name(), Summary(result));
  return result.errors > 0 || (strict && result.warnings > 0) ? kFailed : kDone;
}

int Check(const CheckOptions &options) {
  int code = kDone;
  for (const std::string &path : options.inputs) {
    code = std::max(code, CheckFile(path, options.strict));
  }
  return code;
}

}  // namespace

void AddCheck(CLI::App &app, Invocation &invocation) {
  CLI::App *check = app.add_subcommand("check", "Find what is wrong with TVB files");
  const auto options = std::make_shared<CheckOptions>();
  AddInputs(*check, invocation, "IN.tvb", options->inputs,
            "TVB files to check, each by itself; - is standard input");
  check->add_flag("--strict", options->strict, "Fail on warnings too");
  check->callback(
      [options, &invocation] { invocation.run = [options] { return Check(*options); }; });
}

}  // namespace tool
