// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/clock_rate.h"

namespace tvb {
namespace {

constexpr uint32_t kDefaultHz = 1000000;

}  // namespace

void ClockRate::Set(uint32_t hz) {
  if (hz == 0) {
    cleared_ = true;
    lowest_ = 0;
  } else if (lowest_ == 0 || hz < lowest_) {
    lowest_ = hz;
  }
}

void ClockRate::Run() {
  if (cleared_ && lowest_ == 0) {
    lowest_ = kDefaultHz;
  }
}

std::optional<uint32_t> ClockRate::Exact() const {
  return cleared_ ? Highest() : std::nullopt;
}

std::optional<uint32_t> ClockRate::Highest() const {
  return lowest_ != 0 ? std::optional<uint32_t>(lowest_) : std::nullopt;
}

}  // namespace tvb
