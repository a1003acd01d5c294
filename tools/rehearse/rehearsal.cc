// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/rehearsal.h"

#include <utility>

namespace tool {

Rehearsal::Rehearsal(tvb::Bytes image, const tvb::HeaderView &header, Target *chain,
                     const RehearsalOptions &options, const RehearsalSinks &sinks)
    : image_(image),
      log_(sinks.log),
      playhead_(image, header, ViewDriver()),
      lines_(clock_, options.pin_ns, &playhead_),
      echo_(playhead_),
      target_(chain == nullptr ? &echo_ : chain) {
  if (options.fail_at) {
    target_ = &flipped_.emplace(*target_, playhead_, options.fail_at->scan, options.fail_at->bit);
  }
  lines_.Connect(*target_);
  Watch(options, sinks);
}

void Rehearsal::Watch(const RehearsalOptions &options, const RehearsalSinks &sinks) {
  if (sinks.vcd) {
    vcd_.emplace(sinks.vcd, lines_, options.pin_ns, options.vcd_idle, options.vcd_state);
    lines_.WatchChanges([this](const LineChange &change) { vcd_->Add(change); });
  }
  if (sinks.scans) {
    scans_.emplace(sinks.scans);
    lines_.WatchScans([this](const LineScan &scan) { scans_->Add(scan); });
  }
}

void Rehearsal::InvertRead(uint64_t clock) {
  target_ = &inverted_.emplace(*target_, clock);
  lines_.Connect(*target_);
}

void Rehearsal::Run(Ticks ticks) {
  if (!platform_) {
    platform_.emplace(clock_, log_);
    platform_->Load();
  }
  result_ = platform_->Play(lines_, image_, std::move(ticks));
  if (result_.stop == DriverStop::kMismatch) {
    ExplainMismatch();
  }
}

void Rehearsal::Next(tvb::Bytes image, const tvb::HeaderView &header) {
  while (playhead_.Next()) {
  }
  tvb::Player player = playhead_.player();
  player.EndFile();
  image_ = image;
  playhead_ = Playhead(image, header, ViewDriver(), player);
  earlier_counts_ += lines_.counts();
  lines_.StartCounting();
  mismatch_.reset();
}

void Rehearsal::End() {
  if (platform_) {
    platform_->Unload();
    platform_.reset();
  }
  if (vcd_) {
    vcd_->Finish(clock_.now());
  }
  if (scans_) {
    scans_->Finish(lines_.scan());
  }
}

// The download is over: the bits shifted now to show the whole scan are not part of it.
void Rehearsal::ExplainMismatch() {
  const std::optional<StoppedScan> stopped = FinishScan(lines_, playhead_, *target_);
  if (stopped) {
    mismatch_ = MakeMismatch(*stopped, lines_, playhead_);
  }
}

}  // namespace tool
