// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks any bytes. Findings lie within the file and have a message, and their counts add up.
#include "fuzz/fuzz.h"
#include "tvb/checker.h"
#include "tvb/play_order.h"
#include "tvb/reader.h"
#include "tvb/seal.h"

namespace {

uint64_t CountRecords(tvb::Bytes image, const tvb::HeaderView &header) {
  tvb::Reader reader(image, header);
  while (reader.Next()) {
  }
  return reader.records();
}

void Check(tvb::Bytes image) {
  const size_t size = image.size();
  uint64_t findings = 0;
  uint64_t errors = 0;
  uint64_t damaged = 0;
  const auto report = [&](const tvb::Finding &finding) {
    ++findings;
    errors += finding.severity != tvb::Severity::kWarning;
    damaged += finding.severity == tvb::Severity::kDamaged;
    fuzz::Require(finding.offset <= size, "a finding lies in the file", finding.message);
    fuzz::Require(!finding.message.empty(), "a finding says what it is");
  };
  const tvb::CheckResult result = tvb::CheckImage(image, report);
  fuzz::Require(result.errors == errors, "errors are counted");
  fuzz::Require(result.errors + result.warnings == findings, "findings are counted");
  fuzz::Require(result.unchecked <= size, "no more is left than there was");

  const tvb::HeaderView header = tvb::ReadHeader(image);
  fuzz::Require(result.is_tvb == !header.fault, "check and reader agree on what a header is");
  if (result.is_tvb && result.errors == 0) {
    fuzz::Require(CountRecords(image, header) == result.records,
                  "check and reader agree on the records of a good file");
  }
  if (result.is_tvb) {
    tvb::MeasurePlay(image, header);
    fuzz::Require(damaged == (result.seal.state == tvb::SealState::kWrong ? 1 : 0),
                  "a wrong seal is told once");
    fuzz::Require(result.seal.found == tvb::SealOf(image).found, "a seal is the same in steps");
  }
}

}  // namespace

// A changed file that was sealed is checked again with its seal put right.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Check({data, size});
  tvb::Buffer sealed(data, data + size);
  if (tvb::SealOf(sealed).state == tvb::SealState::kWrong) {
    tvb::Seal(sealed);
    Check(sealed);
  }
  return 0;
}
