// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `status`: what the framework's attributes say, in words.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>

#include "tools/board/device.h"
#include "tools/cli/command.h"
#include "tools/cli/text.h"

namespace tool {
namespace {

// The words of the attribute "error" after its colon.
std::string_view WhyText(std::string_view why) {
  if (why == "hw-error") {
    return "a comparison or a line failed, or the driver found it malformed";
  }
  if (why == "firmware-invalid") {
    return "it is damaged, or not sealed but has to be";
  }
  if (why == "invalid-file-size") {
    return "it is too long";
  }
  return "an error of the system, see the kernel log";
}

std::string EndText(const BoardStatus &status) {
  if (status.error == "none") {
    return status.result == "1" ? "done" : "none so far";
  }
  const std::string_view error = status.error;
  const size_t colon = error.find(':');
  const std::string_view why = error.substr(colon == error.npos ? 0 : colon + 1);
  if (why == "user-abort") {
    return "cancelled";
  }
  if (status.EndedComparing()) {
    return fmt::format("failed: the comparison at clock {}, where {} was read",
                       NumberText(status.last_read->clock), int(*status.last_read->level));
  }
  return fmt::format("{}: {}", error.starts_with("preparing:") ? "not played" : "failed",
                     WhyText(why));
}

void PutRow(const char *label, const std::string &text) {
  fmt::print("{:<14}{}\n", label, text);
}

std::string FileText(const BoardStatus &status) {
  return status.crc == "none" || status.file.empty()
             ? PrintableText(status.file)
             : fmt::format("{} (CRC {})", PrintableText(status.file), status.crc);
}

std::string ClocksText(const BoardStatus &status) {
  std::string text = NumberText(status.clocks);
  if (status.total_clocks != 0) {
    text += fmt::format(" of {}, {} %", NumberText(status.total_clocks),
                        status.clocks * 100 / status.total_clocks);
  }
  return fmt::format("{} in {}", text, BoardTimeText(status.elapsed_ms));
}

int Status(const std::string &folder) {
  const Device device(folder);
  const BoardStatus status = device.Status();
  PutRow("device", PrintableText(device.folder()));
  PutRow("lines", device.Read("pins"));
  const std::string drivers = device.Read("drivers");
  PutRow("driver", drivers.empty() ? "none: is it loaded?" : drivers.substr(0, drivers.find(' ')));
  PutRow("state", status.state);
  PutRow("file", status.file.empty() ? "none so far" : FileText(status));
  PutRow("last end", EndText(status));
  PutRow("clocks", ClocksText(status));
  PutRow("last read", status.last_read
                          ? fmt::format("{} at clock {}", int(*status.last_read->level),
                                        NumberText(status.last_read->clock))
                          : "none");
  return kDone;
}

}  // namespace

void AddStatus(CLI::App &app, Invocation &invocation) {
  CLI::App *status = app.add_subcommand("status", "Tell what this board's framework is doing");
  const auto device = std::make_shared<std::string>();
  AddDevice(*status, *device);
  status->callback(
      [device, &invocation] { invocation.run = [device] { return Status(*device); }; });
}

}  // namespace tool
