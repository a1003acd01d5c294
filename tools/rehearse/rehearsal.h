// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver, its lines, a target and the watchers, assembled for downloads.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/mismatch.h"
#include "tools/rehearse/platform.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/target.h"
#include "tools/rehearse/trace.h"
#include "tvb/bytes.h"
#include "tvb/reader.h"

namespace tool {

// A bit to read inverted: the number of a scan of the file, from 1, and of a bit of its record,
// from 0.
struct FailAt {
  uint64_t scan = 0;
  uint64_t bit = 0;
};

struct RehearsalOptions {
  std::optional<FailAt> fail_at;
  uint64_t vcd_idle = 0;  // clocks drawn per stay in Run-Test/Idle; 0: all
  StateForm vcd_state = StateForm::kBits;
  double pin_ns = 100;  // duration of a pin call
};

// The sinks for the results of a rehearsal; empty if not wanted.
struct RehearsalSinks {
  DriverLog::Sink log;
  TextSink vcd;
  TextSink scans;
};

// One per process: only the first finds the driver's state as at load. The caller owns the images
// and the chain.
class Rehearsal {
 public:
  // `chain` null: the target is an echo. `image` has that header, which is valid.
  Rehearsal(tvb::Bytes image, const tvb::HeaderView &header, Target *chain,
            const RehearsalOptions &options, const RehearsalSinks &sinks);
  Rehearsal(const Rehearsal &) = delete;
  Rehearsal &operator=(const Rehearsal &) = delete;

  // As Lines::WatchChanges().
  void WatchChanges(std::function<void(const LineChange &change)> watcher) {
    lines_.WatchChanges(std::move(watcher));
  }

  // Inverts what is read after `clock` more rising edges of TCK.
  void InvertRead(uint64_t clock);

  // Plays the image. `ticks` are for looking only.
  void Run(Ticks ticks);

  // Goes on to another image, which the same driver plays to the same target with the next Run().
  // The image before it was played to its end.
  void Next(tvb::Bytes image, const tvb::HeaderView &header);

  // Unloads the driver and finishes the traces; call it once, after the last Run().
  void End();

  // Valid after Run(), for the image that was played last.
  const DriverResult &result() const {
    return result_;
  }
  const std::optional<Mismatch> &mismatch() const {
    return mismatch_;
  }

  // True if the bit to be inverted was reached, or if none was requested.
  bool failed_as_asked() const {
    return !flipped_ || flipped_->was_there();
  }

  const Lines &lines() const {
    return lines_;
  }
  const BoardClock &clock() const {
    return clock_;
  }

  // Of all images.
  LineCounts all_counts() const {
    LineCounts counts = earlier_counts_;
    return counts += lines_.counts();
  }

  // Of the image that is or was played last.
  const LineCounts &counts() const {
    return lines_.counts();
  }
  const Playhead &playhead() const {
    return playhead_;
  }
  Playhead &playhead() {
    return playhead_;
  }

 private:
  void Watch(const RehearsalOptions &options, const RehearsalSinks &sinks);
  void ExplainMismatch();

  tvb::Bytes image_;
  BoardClock clock_;
  DriverLog log_;
  std::optional<Platform> platform_;
  LineCounts earlier_counts_;
  Playhead playhead_;
  Lines lines_;
  EchoTarget echo_;
  std::optional<FlippedTarget> flipped_;
  std::optional<InvertedRead> inverted_;
  Target *target_;
  std::optional<Vcd> vcd_;
  std::optional<ScanList> scans_;
  DriverResult result_;
  std::optional<Mismatch> mismatch_;
};

}  // namespace tool
