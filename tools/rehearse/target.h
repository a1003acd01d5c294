// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What is at the other end of the four lines in a rehearsal.
#pragma once

#include <cstdint>

#include "tools/cli/bit_row.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/scan.h"

namespace tool {

enum class Line : uint8_t { kTck, kTms, kTdi, kTdo };

// Something that answers on TDO. At first TCK is low, TMS and TDI are high.
class Target {
 public:
  virtual ~Target() = default;

  // TCK, TMS or TDI has changed to `level`. TMS and TDI are sampled at the rising edge of TCK; TDO
  // changes at the falling one.
  virtual void Write(Line line, bool level) = 0;

  // The level of TDO now.
  virtual bool Tdo() const = 0;
};

// Goes on with a scan that rests in a Shift state, TCK and TMS being low: `tdo` has its bits so
// far, and the next is on the lines. Shifts, and reads TDO, until `tdo` has as many bits as `tdi`.
void ShiftOn(Target &target, const BitRow &tdi, BitRow &tdo);

// Follows the lines as a target does, and tells from the playhead which bit of the file is on them.
class FileBit {
 public:
  // `playhead` is told of the scans on the same lines, and outlives this.
  explicit FileBit(const Playhead &playhead) : playhead_(playhead) {}

  void Write(Line line, bool level);

  // The scan of the file that is shifted; null in the driver's own and where none is.
  const FileScan *scan() const {
    return tap_.shifting() ? playhead_.scan() : nullptr;
  }

  // The number of the bit on the lines, header included.
  uint64_t bit() const {
    return tap_.bits();
  }

 private:
  const Playhead &playhead_;
  Tap tap_;
  bool tms_ = true;
};

// Answers what the file expects: puts the expected TDO of the record's scan on TDO, bit for bit and
// wherever header and trailer place them. Where the record expects nothing, in header and trailer,
// in the driver's own scans and outside the Shift states TDO is 1, as on a line that nobody drives.
class EchoTarget : public Target {
 public:
  // As FileBit.
  explicit EchoTarget(const Playhead &playhead) : at_(playhead) {}

  void Write(Line line, bool level) override;
  bool Tdo() const override {
    return tdo_;
  }

 private:
  bool Answer() const;

  FileBit at_;
  bool tdo_ = true;
};

// Inverts one bit of what another target answers.
class FlippedTarget : public Target {
 public:
  // `scan` counts the file's scans from 1, `bit` the record's own bits from 0, the first shifted.
  // `target` outlives this; `playhead` as in FileBit.
  FlippedTarget(Target &target, const Playhead &playhead, uint64_t scan, uint64_t bit)
      : target_(target), at_(playhead), scan_(scan), bit_(bit) {}

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
  FileBit at_;
  uint64_t scan_;
  uint64_t bit_;
  bool flips_ = false;
  bool was_there_ = false;
};

}  // namespace tool
