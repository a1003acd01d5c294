// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks frequencies and run-tests.
#pragma once

#include "tvb/finding.h"
#include "tvb/player.h"
#include "tvb/reader.h"

namespace tvb {

// Follows the frequency through the file.
class TimeCheck {
 public:
  explicit TimeCheck(Findings &findings) : findings_(findings) {}

  // A FREQUENCY record.
  void Frequency(const RecordView &record);

  // A RUNTEST record.
  void RunTest(const RecordView &record);

 private:
  void CheckGate(const RecordView &record);
  bool CheckFields(const RecordView &record);
  void CheckCarryOver(const RecordView &record);

  Findings &findings_;
  ClockRate rate_;
  bool told_carry_over_ = false;
};

}  // namespace tvb
