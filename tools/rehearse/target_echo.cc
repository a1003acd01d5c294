// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/target_echo.h"

namespace tool {

void EchoTarget::Write(Line line, bool level) {
  if (line == Line::kTck && !level) {
    tdo_ = Answer();
  }
}

bool EchoTarget::Answer() const {
  const FileScan *scan = playhead_.scan();
  if (!tap_.shifting() || scan == nullptr) {
    return true;
  }
  const std::optional<uint32_t> bit = scan->OwnBit(tap_.bits());
  if (!bit || (scan->tdo.empty() && !scan->Compares(*bit))) {
    return true;
  }
  return scan->Expected(*bit);
}

void FlippedTarget::Write(Line line, bool level) {
  target_.Write(line, level);
  if (line == Line::kTck && !level) {
    flips_ = IsThere();
    was_there_ |= flips_;
  }
}

bool FlippedTarget::IsThere() const {
  const FileScan *scan = playhead_.scan();
  return tap_.shifting() && scan != nullptr && scan->number == scan_ &&
         scan->OwnBit(tap_.bits()) == bit_;
}

}  // namespace tool
