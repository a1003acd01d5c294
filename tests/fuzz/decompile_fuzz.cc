// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Decompiles any file and compiles the result. The SVF of a file without errors compiles to the
// same scans, and decompiling that gives the same SVF.
#include "fuzz/convert.h"
#include "fuzz/fuzz.h"
#include "fuzz/scans.h"
#include "svf/text.h"
#include "tools/cli/command.h"
#include "tvb/checker.h"
#include "tvb/reader.h"

namespace {

tvb::Buffer Compile(const std::string &svf) {
  try {
    return fuzz::CompileSvf(svf);
  } catch (const svf::Error &error) {
    fuzz::Require(false, std::string("what is made of a good file compiles: ") + error.what(), svf);
    throw;
  }
}

// Compiling merges header and trailer registers into the scans.
void RoundTrip(tvb::Bytes image, const std::string &svf) {
  const tvb::Buffer compiled = Compile(svf);
  if (!fuzz::HasPads(image)) {
    fuzz::Require(fuzz::Scans(compiled) == fuzz::Scans(image), "it compiles to the same scans",
                  fuzz::Scans(image) + svf + fuzz::Scans(compiled));
  }
  const std::string again = fuzz::DecompileTvb(compiled);
  fuzz::Require(fuzz::DecompileTvb(Compile(again)) == again, "from then on it stays the same",
                again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const tvb::Bytes image(data, size);
  if (tvb::ReadHeader(image).fault || fuzz::IsMuch(image)) {
    return 0;
  }
  bool broken = false;
  const tvb::CheckResult result = tvb::CheckImage(image, [&broken](const tvb::Finding &finding) {
    broken = broken || finding.severity == tvb::Severity::kBroken;
  });
  if (broken) {
    return 0;
  }
  try {
    const std::string svf = fuzz::DecompileTvb(image);
    if (result.errors == 0) {
      RoundTrip(image, svf);
    }
  } catch (const tool::Failure &failure) {
    fuzz::Require(failure.what()[0] != '\0', "a refusal says what it is");
  }
  return 0;
}
