// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "fuzz/rehearse.h"

#include "fuzz/fresh_driver.h"
#include "fuzz/fuzz.h"
#include "host/fuzz_budget.h"
#include "tools/rehearse/play_report.h"
#include "tools/rehearse/verdict.h"
#include "tools/report/page.h"
#include "tvb/checker.h"
#include "tvb/play_order.h"
#include "tvb/reader.h"

namespace fuzz {
namespace {

constexpr uint64_t kMaxClocks = 4000;
constexpr uint64_t kMaxRecords = 2000;

}  // namespace

// MeasurePlay() counts the records as they are read; corrupt records may lead the driver, which
// reads the first of them twice, astray.
bool IsLong(tvb::Bytes image) {
  const tvb::PlayLength length = tvb::MeasurePlay(image, tvb::ReadHeader(image));
  return length.clocks > kMaxClocks || length.records > kMaxRecords ||
         Budget(std::vector<uint8_t>(image.begin(), image.end())).cost() > 10 * kMaxClocks;
}

bool IsGood(tvb::Bytes image) {
  return tvb::CheckImage(image, [](const tvb::Finding &) {}).errors == 0;
}

void Rehearse(tvb::Bytes image, tool::ChainTarget *chain, const tool::RehearsalOptions &options,
              const std::function<void(tool::Rehearsal &rehearsal, int code)> &judge) {
  const MemoryFile memory(image.data(), image.size());
  const tool::PlayInput input = {std::make_unique<tool::TvbFile>(memory.path())};
  size_t text = 0;
  const tool::TextSink count = [&text](std::string_view some) { text += some.size(); };
  const auto log = [&text](uint64_t, std::string_view line) { text += line.size(); };
  const tvb::HeaderView &header = input.file->header();
  tool::PlayReport report("a target", options.pin_ns);
  tool::Rehearsal rehearsal(image, header, chain, options, {report.TakeLog(log), count, count});
  report.Begin({"file", image, header}, rehearsal);
  rehearsal.Run({[] {}});
  rehearsal.End();
  const int code = tool::TellVerdict(rehearsal, input);
  report.End(rehearsal, code);
  tool::WritePage(report.Finish(rehearsal), count);
  judge(rehearsal, code);
  text += tool::TimeTable(rehearsal.counts(), rehearsal.clock(), options.pin_ns).size();
  Require(text > 0, "there is something to tell");
  FreshDriver();
}

}  // namespace fuzz
