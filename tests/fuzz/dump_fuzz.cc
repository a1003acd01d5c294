// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Dumps any file as text and as JSON. Each JSON line is an object, and the records follow each
// other without gaps.
#include <nlohmann/json.hpp>
#include <sstream>

#include "fuzz/fuzz.h"
#include "tools/dump/dump.h"
#include "tvb/reader.h"
#include "tvb/seal.h"

namespace {

void Show(tvb::Bytes image, const tvb::HeaderView &header, tool::DumpFormat &format) {
  tvb::Reader reader(image, header);
  format.Header(header, tvb::SealOf(image));
  while (const std::optional<tvb::RecordView> record = reader.Next()) {
    format.Record(*record, 0);
  }
}

void RequireObjects(const std::string &text) {
  std::istringstream lines(text);
  uint64_t number = 0;
  for (std::string line; std::getline(lines, line); ++number) {
    const nlohmann::json object = nlohmann::json::parse(line, nullptr, false);
    fuzz::Require(object.is_object(), "a line of JSON is an object", line);
    fuzz::Require(object["record"] == number, "the records are numbered", line);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const tvb::Bytes image(data, size);
  const tvb::HeaderView header = tvb::ReadHeader(image);
  if (header.fault) {
    return 0;
  }
  const bool hex = size % 2 == 0;
  fuzz::Written([&](tool::OutputFile &out) {
    tool::DumpText format(image, out, hex);
    Show(image, header, format);
  });
  RequireObjects(fuzz::Written([&](tool::OutputFile &out) {
    tool::DumpJson format(image, out, hex);
    Show(image, header, format);
  }));
  return 0;
}
