// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver, its lines, a target and whoever watches, put together for one download.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "tools/rehearse/board_clock.h"
#include "tools/rehearse/driver_log.h"
#include "tools/rehearse/driver_run.h"
#include "tools/rehearse/lines.h"
#include "tools/rehearse/mismatch.h"
#include "tools/rehearse/play.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/scan_text.h"
#include "tools/rehearse/target_chain.h"
#include "tools/rehearse/target_echo.h"
#include "tools/rehearse/vcd.h"

namespace tool {

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
  // `chain` null: the target is an echo. The header is that of `image` and has no fault. Of the
  // options those that name files are not looked at.
  Rehearsal(tvb::Bytes image, const tvb::HeaderView &header, ChainTarget *chain,
            const PlayOptions &options, RehearsalSinks sinks);

  // Plays the image. `on_tick` is called now and then, with the lines at rest.
  void Run(const std::function<void()> &on_tick);

  // Good after Run().
  const DriverResult &result() const {
    return result_;
  }
  const std::optional<Mismatch> &mismatch() const {
    return mismatch_;
  }

  // Clock and counts as the driver left them.
  const BoardClock &clock() const {
    return clock_at_end_;
  }
  const LineCounts &counts() const {
    return counts_at_end_;
  }

  // The bit that was to be inverted was there, or none was to be.
  bool failed_as_asked() const {
    return !flipped_ || flipped_->was_there();
  }

  Playhead &playhead() {
    return playhead_;
  }
  const LineCounts &counts_now() const {
    return lines_.counts();
  }

 private:
  // A line of the log is at its end when the driver goes on to something else.
  class LogFlush : public ScanWatcher {
   public:
    explicit LogFlush(DriverLog &log) : log_(log) {}
    void Entered(TapState) override {
      log_.Flush();
    }
    void Shifted(bool, bool) override {}
    void Read(bool) override {}

   private:
    DriverLog &log_;
  };

  void WatchAll(const RehearsalSinks &sinks, const PlayOptions &options);
  void EndWatching();

  BoardClock clock_;
  DriverLog log_;
  LogFlush log_flush_;
  Lines lines_;
  Playhead playhead_;
  TdoWatch tdo_;
  std::unique_ptr<EchoTarget> echo_;
  std::unique_ptr<FlippedTarget> flipped_;
  std::unique_ptr<Vcd> vcd_;
  std::unique_ptr<ScanText> scan_text_;
  tvb::Bytes image_;
  DriverResult result_;
  std::optional<Mismatch> mismatch_;
  BoardClock clock_at_end_;
  LineCounts counts_at_end_;
};

}  // namespace tool
