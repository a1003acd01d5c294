// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A target that answers what the file expects.
#pragma once

#include "tools/rehearse/playhead.h"
#include "tools/rehearse/tap_observer.h"
#include "tools/rehearse/target.h"

namespace tool {

// Puts the expected TDO of the record's scan on TDO, bit for bit and wherever header and trailer
// place them. Where the record expects nothing, in header and trailer, in the driver's own scans
// and outside the Shift states TDO is 1, as on a line that nobody drives.
class EchoTarget : public Target {
 public:
  // Both must watch the same lines, and outlive the target.
  EchoTarget(const TapObserver &tap, const Playhead &playhead) : tap_(tap), playhead_(playhead) {}

  void Write(Line line, bool level) override;
  bool Tdo() const override {
    return tdo_;
  }

 private:
  bool Answer() const;

  const TapObserver &tap_;
  const Playhead &playhead_;
  bool tdo_ = true;
};

// Inverts one bit of what another target answers.
class FlippedTarget : public Target {
 public:
  // `scan` counts the file's scans from 1, `bit` the record's own bits from 0, the first shifted.
  // All must outlive the target; `playhead` and `tap` watch the same lines.
  FlippedTarget(Target &target, const TapObserver &tap, const Playhead &playhead, uint64_t scan,
                uint64_t bit)
      : target_(target), tap_(tap), playhead_(playhead), scan_(scan), bit_(bit) {}

  void Write(Line line, bool level) override;
  bool Tdo() const override {
    return target_.Tdo() != flips_;
  }

  // That bit has been on TDO.
  bool was_there() const {
    return was_there_;
  }

 private:
  bool IsThere() const;

  Target &target_;
  const TapObserver &tap_;
  const Playhead &playhead_;
  uint64_t scan_;
  uint64_t bit_;
  bool flips_ = false;
  bool was_there_ = false;
};

}  // namespace tool
