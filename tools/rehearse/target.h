// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The target at the other end of the four lines in a rehearsal.
#pragma once

#include <cstdint>

#include "tools/cli/bit_row.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/scan.h"

namespace tool {

enum class Line : uint8_t { kTck, kTms, kTdi, kTdo };

// Drives TDO. Initially TCK is low, TMS and TDI are high.
class Target {
 public:
  virtual ~Target() = default;

  // TCK, TMS or TDI has changed to `level`. The target samples TMS and TDI at the rising edge of
  // TCK and changes TDO at the falling edge.
  virtual void Write(Line line, bool level) = 0;

  // The current level of TDO.
  virtual bool Tdo() const = 0;
};

// Continues a scan that rests in a Shift state, with TCK and TMS low: `tdo` holds its bits so far,
// and the next bit is on the lines. Shifts and reads TDO until `tdo` has as many bits as `tdi`.
void ShiftOn(Target &target, const BitRow &tdi, BitRow &tdo);

// Follows the lines like a target and finds from the playhead which bit of the file is on them.
class FileBit {
 public:
  // `playhead` is notified of the scans on the same lines, and outlives this.
  explicit FileBit(const Playhead &playhead) : playhead_(playhead) {}

  void Write(Line line, bool level) {
    if (line == Line::kTms) {
      tms_ = level;
    } else if (line == Line::kTck && level) {
      tap_.Rise(tms_);
    }
  }

  // A rising edge in a state that lasts, with TMS low.
  void Stay() {
    tap_.Stay();
  }

  bool shifting() const {
    return tap_.shifting();
  }

  // The scan of the file on the lines, if a scan is; null in the driver's own.
  const FileScan *scan() const {
    return playhead_.scan();
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

// Answers as the file expects: drives the expected TDO of the record's scan, bit by bit and at the
// place where header and trailer put it. Where the record expects nothing, in header and trailer,
// in the driver's own scans and outside the Shift states TDO is 1, like an undriven line. An edge
// costs little: the answer is found only where TDO is read.
class EchoTarget final : public Target {
 public:
  // See FileBit.
  explicit EchoTarget(const Playhead &playhead) : at_(playhead) {}

  void Write(Line line, bool level) override {
    if (line == Line::kTck) {
      tck_ = level;
      shifted_ = at_.shifting();
    }
    at_.Write(line, level);
  }

  // Any change but a rising edge; and a rising edge in a state that lasts, with TMS low.
  void ChangeLevel(Line line, bool level) {
    if (line == Line::kTck) {
      tck_ = false;
    } else if (line == Line::kTms) {
      at_.Write(line, level);
    }
  }
  void Stay() {
    tck_ = true;
    shifted_ = at_.shifting();
    at_.Stay();
  }

  // While TCK is high, the level of the edge before.
  bool Tdo() const override {
    if (tck_) {
      return !shifted_ || Answer(at_.bit() - 1);
    }
    return !at_.shifting() || Answer(at_.bit());
  }

  // The level of TDO for a bit of the scan on the lines.
  bool Answer(uint64_t bit) const {
    const FileScan *scan = at_.scan();
    const std::optional<uint32_t> own = scan == nullptr ? std::nullopt : scan->OwnBit(bit);
    if (!own) {
      return true;
    }
    return scan->tdo.empty() ? !scan->Compares(*own) : scan->Expected(*own);
  }

 private:
  FileBit at_;
  bool tck_ = false;
  bool shifted_ = false;  // where TCK is high: at its edge
};

// Inverts one bit of another target's answer.
class FlippedTarget : public Target {
 public:
  // `scan` is the number of a scan of the file, from 1, `bit` that of one of the record's own bits,
  // from 0 in shift order. `target` outlives this; see FileBit for `playhead`.
  FlippedTarget(Target &target, const Playhead &playhead, uint64_t scan, uint64_t bit)
      : target_(target), at_(playhead), scan_(scan), bit_(bit) {}

  void Write(Line line, bool level) override;
  bool Tdo() const override {
    return target_.Tdo() != flips_;
  }

  // True if that bit has been on TDO.
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

// Inverts another target's answer after so many rising edges of TCK, until the next one.
class InvertedRead : public Target {
 public:
  // `target` outlives this.
  InvertedRead(Target &target, uint64_t clock) : target_(target), clock_(clock) {}

  void Write(Line line, bool level) override;
  bool Tdo() const override {
    return target_.Tdo() != (clocks_ == clock_);
  }

 private:
  Target &target_;
  uint64_t clock_;
  uint64_t clocks_ = 0;
};

}  // namespace tool
