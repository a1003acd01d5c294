// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What is at the other end of the four lines in a rehearsal.
#pragma once

#include <cstdint>

namespace tool {

enum class Line : uint8_t { kTck, kTms, kTdi, kTdo };

// Something that answers on TDO. It sees the lines as they change and nothing else of the player.
class Target {
 public:
  virtual ~Target() = default;

  // TCK, TMS or TDI has changed to `level`. TMS and TDI are sampled at the rising edge of TCK; TDO
  // changes at the falling one.
  virtual void Write(Line line, bool level) = 0;

  // The level of TDO now.
  virtual bool Tdo() const = 0;
};

}  // namespace tool
