// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `probe`: the IDCODE at each place of this machine's chain.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>

#include "tools/board/device.h"
#include "tools/board/download.h"
#include "tools/board/probe.h"
#include "tools/cli/command.h"

namespace tool {
namespace {

constexpr uint32_t kMaxProbed = 1000;

struct ProbeOptions {
  std::string device;
  std::string log;
  uint32_t devices = 1;
};

// Fails if no device answers with an IDCODE.
int Probe(const ProbeOptions &options) {
  const Device device(options.device);
  const Interrupts interrupts;
  int code = kFailed;
  for (uint32_t i = 0; i < options.devices; ++i) {
    const uint32_t idcode = ProbeIdcode(device, options.log, {i, options.devices - 1 - i});
    const std::string why = WhyNoIdcode(idcode);
    fmt::print("device {} of {}: {}\n", i + 1, options.devices,
               why.empty() ? fmt::format("{:08X}", idcode) : why);
    fflush(stdout);
    code = why.empty() ? kDone : code;
  }
  return code;
}

}  // namespace

void AddProbe(CLI::App &app, Invocation &invocation) {
  CLI::App *probe = app.add_subcommand("probe", "Read the IDCODEs of this board's chain");
  const auto options = std::make_shared<ProbeOptions>();
  AddDevice(*probe, options->device);
  AddKernelLog(*probe, options->log);
  probe
      ->add_option("--devices", options->devices,
                   "How many devices the chain has, each with an instruction register of 8 bits")
      ->check(CLI::Range(1u, kMaxProbed).description(""))
      ->capture_default_str()
      ->type_name("COUNT");
  probe->callback(
      [options, &invocation] { invocation.run = [options] { return Probe(*options); }; });
}

}  // namespace tool
