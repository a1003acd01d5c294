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

void FlippedTarget::Write(Line line, bool level) {
  target_.Write(line, level);
  at_.Write(line, level);
  if (line == Line::kTck && !level) {
    flips_ = IsThere();
    was_there_ |= flips_;
  }
}

bool FlippedTarget::IsThere() const {
  const FileScan *scan = at_.shifting() ? at_.scan() : nullptr;
  return scan != nullptr && scan->number == scan_ && scan->OwnBit(at_.bit()) == bit_;
}

void InvertedRead::Write(Line line, bool level) {
  target_.Write(line, level);
  clocks_ += line == Line::kTck && level;
}

}  // namespace tool
