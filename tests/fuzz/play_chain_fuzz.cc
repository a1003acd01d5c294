// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Rehearses any file with a simulated chain, once intact and once with faults. Where a comparison
// of a good file fails, the expected and the read bits differ under the mask.
#include "fuzz/fuzz.h"
#include "fuzz/rehearse.h"
#include "tools/rehearse/target_chain.h"
#include "tvb/reader.h"

namespace {

constexpr const char *kChain = R"({
  "devices": [{"idcode": "0x13579BDF", "instruction": 224},
              {"idcode": "0x0A014C35",
               "part": {"rows": 16, "bits": 128, "erase": 100, "program": 5}}, {}]})";

constexpr const char *kFaultyChain = R"({
  "devices": [{"idcode": "0x0A014C35",
               "part": {"rows": 16, "bits": 128, "erase": 1, "program": 1, "blank": true}}],
  "faults": [{"kind": "flip", "scan": 7, "bit": 3}, {"kind": "dead-row", "device": 1, "row": 2}]})";

void Play(tvb::Bytes image, const char *description) {
  tool::ChainTarget chain(tool::ParseChain(description, "chain.json"), "chain.json");
  const bool good = fuzz::IsGood(image);
  fuzz::Rehearse(image, &chain, {}, [good](tool::Rehearsal &rehearsal, int) {
    const std::optional<tool::Mismatch> &mismatch = rehearsal.mismatch();
    if (good && mismatch) {
      const tool::BitRow differing = (mismatch->expected ^ mismatch->read) & mismatch->mask;
      fuzz::Require(differing[mismatch->bit], "the bit that is told differs");
    }
  });
  fuzz::Require(!chain.Memory().empty(), "the part has a memory");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const tvb::Bytes image(data, size);
  if (!tvb::ReadHeader(image).fault && !fuzz::IsLong(image)) {
    Play(image, kChain);
    Play(image, kFaultyChain);
  }
  return 0;
}
