// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/target.h"

namespace tool {

void ShiftOn(Target &target, const BitRow &tdi, BitRow &tdo) {
  tdo.Push(target.Tdo());
  while (tdo.size() < tdi.size()) {
    target.Write(Line::kTck, true);
    target.Write(Line::kTck, false);
    target.Write(Line::kTdi, tdi[tdo.size()]);
    tdo.Push(target.Tdo());
  }
}

void FileBit::Write(Line line, bool level) {
  if (line == Line::kTms) {
    tms_ = level;
  } else if (line == Line::kTck && level) {
    tap_.Rise(tms_);
  }
}

void EchoTarget::Write(Line line, bool level) {
  at_.Write(line, level);
  if (line == Line::kTck && !level) {
    tdo_ = Answer();
  }
}

bool EchoTarget::Answer() const {
  const std::optional<uint32_t> bit = at_.own_bit();
  if (!bit || (at_.scan()->tdo.empty() && !at_.scan()->Compares(*bit))) {
    return true;
  }
  return at_.scan()->Expected(*bit);
}

void FlippedTarget::Write(Line line, bool level) {
  target_.Write(line, level);
  at_.Write(line, level);
  if (line == Line::kTck && !level) {
    flips_ = IsThere();
    was_there_ |= flips_;
  }
}

bool FlippedTarget::IsThere() const {
  return at_.scan() != nullptr && at_.scan()->number == scan_ && at_.own_bit() == bit_;
}

}  // namespace tool
