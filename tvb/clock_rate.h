// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What is known, while a file is written, of the TCK frequency that its player will be at.
#pragma once

#include <cstdint>
#include <optional>

namespace tvb {

// The player keeps the lowest frequency that any file has set since it was loaded, until one sets
// 0, which means unset. A run-test that finds it unset makes it 1 MHz, and that stays. So nothing
// is certain before the file has set 0 itself. All frequencies are in Hz.
class ClockRate {
 public:
  // The file says: FREQUENCY `hz`.
  void Set(uint32_t hz);

  // The file says: RUNTEST.
  void Run();

  // The frequency in force, if it is certain and set.
  std::optional<uint32_t> Exact() const;

  // A frequency that the one in force cannot exceed, if there is one.
  std::optional<uint32_t> Highest() const;

 private:
  bool cleared_ = false;  // nothing from earlier files is left
  uint32_t lowest_ = 0;   // of this file's own since then; 0: none yet
};

}  // namespace tvb
