// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Compiles any text. Invalid SVF is refused at a place within the text. Valid SVF, with every kind
// of block, compiles to a file without check errors, and the SVF decompiled from it compiles to the
// same file.
#include <initializer_list>

#include "fuzz/convert.h"
#include "fuzz/fuzz.h"
#include "fuzz/scans.h"
#include "svf/text.h"
#include "tvb/checker.h"

namespace {

tool::CompileOptions Options(tvb::BlockChoice blocks) {
  tool::CompileOptions options;
  options.blocks = blocks;
  return options;
}

tool::CompileOptions PlainOptions() {
  tool::CompileOptions options;
  options.plain = true;
  options.pause_as_idle = true;
  options.chain = tvb::ChainPlace{2, 1};
  return options;
}

void RoundTrip(const tvb::Buffer &image) {
  if (fuzz::IsMuch(image)) {
    return;
  }
  const std::string svf = fuzz::DecompileTvb(image);
  const tvb::Buffer again = fuzz::CompileSvf(svf);
  fuzz::Require(fuzz::Scans(again) == fuzz::Scans(image), "the scans stay the same", svf);
  fuzz::Require(again == image, "the file stays the same", svf + fuzz::DecompileTvb(again));
}

// Returns whether it compiles.
bool Try(std::string_view svf, const tool::CompileOptions &options) {
  try {
    const tvb::Buffer image = fuzz::CompileSvf(svf, options);
    const auto report = [](const tvb::Finding &finding) {
      fuzz::Require(finding.severity == tvb::Severity::kWarning,
                    "a compiled file is without errors", finding.message);
    };
    fuzz::Require(tvb::CheckImage(image, report).is_tvb, "a compiled file is one");
    return true;
  } catch (const svf::Error &error) {
    fuzz::Require(error.offset() <= svf.size(), "an error lies in the text", error.what());
    fuzz::Require(error.what()[0] != '\0', "an error says what it is");
    svf::LineIndex(svf).At(error.offset());
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view svf(reinterpret_cast<const char *>(data), size);
  Try(svf, PlainOptions());
  if (!Try(svf, {})) {
    return 0;
  }
  RoundTrip(fuzz::CompileSvf(svf));
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    fuzz::Require(Try(svf, Options(tvb::BlockChoice::As(row.encoding))),
                  "what compiles, compiles with each encoding");
  }
  return 0;
}
