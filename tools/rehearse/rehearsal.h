// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver, its lines, a target and whoever watches, put together for one download.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/mismatch.h"
#include "tools/rehearse/platform.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/target.h"
#include "tools/rehearse/trace.h"
#include "tvb/bytes.h"
#include "tvb/reader.h"

namespace tool {

// A bit that reads inverted: of a scan of the file, from 1, the bit of its record, from 0.
struct FailAt {
  uint64_t scan = 0;
  uint64_t bit = 0;
};

struct RehearsalOptions {
  std::optional<FailAt> fail_at;
  uint64_t vcd_idle = 0;  // clocks of a stay in Run-Test/Idle that are drawn; 0: all
  double pin_ns = 100;    // what a pin call takes
};

// Where the results of a rehearsal go; empty where they are not wanted.
struct RehearsalSinks {
  DriverLog::Sink log;
  TextSink vcd;
  TextSink scans;
};

// One per process: the driver's state is as at load only once. The image and the chain stay the
// caller's.
class Rehearsal {
 public:
  // `chain` null: the target is an echo. The header is that of `image` and has no fault.
  Rehearsal(tvb::Bytes image, const tvb::HeaderView &header, Target *chain,
            const RehearsalOptions &options, const RehearsalSinks &sinks);
  Rehearsal(const Rehearsal &) = delete;
  Rehearsal &operator=(const Rehearsal &) = delete;

  // Plays the image. `on_tick` is called now and then, between two calls of the driver.
  void Run(const std::function<void()> &on_tick);

  // Good after Run().
  const DriverResult &result() const {
    return result_;
  }
  const std::optional<Mismatch> &mismatch() const {
    return mismatch_;
  }

  // The bit that was to be inverted was there, or none was to be.
  bool failed_as_asked() const {
    return !flipped_ || flipped_->was_there();
  }

  const BoardClock &clock() const {
    return clock_;
  }
  const LineCounts &counts() const {
    return lines_.counts();
  }
  Playhead &playhead() {
    return playhead_;
  }

 private:
  void Watch(const RehearsalOptions &options, const RehearsalSinks &sinks);
  void FinishTraces();
  void ExplainMismatch();

  tvb::Bytes image_;
  BoardClock clock_;
  DriverLog log_;
  Playhead playhead_;
  Lines lines_;
  EchoTarget echo_;
  std::optional<FlippedTarget> flipped_;
  Target *target_;
  std::optional<Vcd> vcd_;
  std::optional<ScanList> scans_;
  DriverResult result_;
  std::optional<Mismatch> mismatch_;
};

}  // namespace tool
