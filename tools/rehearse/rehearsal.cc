// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/rehearsal.h"

#include "tools/rehearse/platform.h"

namespace tool {

Rehearsal::Rehearsal(tvb::Bytes image, const tvb::HeaderView &header, ChainTarget *chain,
                     const PlayOptions &options, RehearsalSinks sinks)
    : log_(sinks.log),
      log_flush_(log_),
      lines_(clock_, options.pin_ns),
      playhead_(image, header, ViewDriver()),
      image_(image) {
  Target *target = chain;
  if (target == nullptr) {
    echo_ = std::make_unique<EchoTarget>(lines_.tap(), playhead_);
    target = echo_.get();
  }
  if (options.fail_at) {
    flipped_ = std::make_unique<FlippedTarget>(*target, lines_.tap(), playhead_,
                                               options.fail_at->scan, options.fail_at->bit);
    target = flipped_.get();
  }
  lines_.Connect(*target);
  WatchAll(sinks, options);
}

// The playhead comes first: the others ask it what the scan is.
void Rehearsal::WatchAll(const RehearsalSinks &sinks, const PlayOptions &options) {
  lines_.Watch(log_flush_);
  lines_.Watch(playhead_);
  lines_.Watch(tdo_);
  if (sinks.vcd) {
    vcd_ = std::make_unique<Vcd>(sinks.vcd, lines_, options.pin_ns, options.vcd_idle);
    lines_.Watch(*vcd_);
  }
  if (sinks.scans) {
    const auto number = [this] {
      const FileScan *scan = playhead_.scan();
      return scan == nullptr ? 0 : scan->number;
    };
    scan_text_ = std::make_unique<ScanText>(sinks.scans, lines_.tap(), number);
    lines_.Watch(*scan_text_);
  }
}

void Rehearsal::Run(const std::function<void()> &on_tick) {
  Platform platform(clock_, log_);
  result_ = RunDriver(platform, lines_, image_, [this, on_tick] {
    log_.Flush();
    on_tick();
  });
  log_.Flush();
  EndWatching();
  if (result_.mismatch) {
    mismatch_ = FindMismatch(lines_, playhead_, tdo_);
  }
}

void Rehearsal::EndWatching() {
  clock_at_end_ = clock_;
  counts_at_end_ = lines_.counts();
  if (vcd_) {
    vcd_->Finish(clock_.now());
  }
  if (scan_text_) {
    scan_text_->Finish();
  }
  lines_.DropWatchers();
}

}  // namespace tool
