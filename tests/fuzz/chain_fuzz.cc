// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Parses any text as a chain description: either it is refused with a message, or the chain can be
// clocked.
#include "fuzz/fuzz.h"
#include "tools/cli/command.h"
#include "tools/rehearse/target_chain.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  try {
    tool::ChainTarget chain(tool::ParseChain(text, "chain.json"), "chain.json");
    for (int clock = 0; clock < 200; ++clock) {
      chain.Write(tool::Line::kTms, data[static_cast<size_t>(clock) % size] & 1);
      chain.Write(tool::Line::kTdi, data[static_cast<size_t>(clock) % size] & 2);
      chain.Write(tool::Line::kTck, false);
      chain.Write(tool::Line::kTck, true);
    }
  } catch (const tool::Failure &failure) {
    fuzz::Require(failure.what()[0] != '\0', "a refusal says what it is");
    fuzz::Require(failure.place().find("chain.json") == 0, "and where", failure.place());
  }
  return 0;
}
