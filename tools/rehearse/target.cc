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
  const FileScan *scan = at_.scan();
  if (scan == nullptr) {
    return true;
  }
  const std::optional<uint32_t> bit = scan->OwnBit(at_.bit());
  if (!bit || (scan->tdo.empty() && !scan->Compares(*bit))) {
    return true;
  }
  return scan->Expected(*bit);
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
  const FileScan *scan = at_.scan();
  return scan != nullptr && scan->number == scan_ && scan->OwnBit(at_.bit()) == bit_;
}

void InvertedRead::Write(Line line, bool level) {
  target_.Write(line, level);
  clocks_ += line == Line::kTck && level;
}

}  // namespace tool
