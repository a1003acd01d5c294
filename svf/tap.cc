// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/tap.h"

#include "svf/text.h"

namespace svf {

std::optional<TapState> FindTapState(std::string_view name) {
  for (int i = 0; i < kTapStates; ++i) {
    if (IsWord(name, kTapTable[i].name)) {
      return static_cast<TapState>(i);
    }
  }
  return std::nullopt;
}

bool IsStable(TapState state) {
  return state == TapState::kReset || state == TapState::kIdle || IsPause(state);
}

bool IsPause(TapState state) {
  return state == TapState::kIrPause || state == TapState::kDrPause;
}

}  // namespace svf
