// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks frequencies and run-tests.
#pragma once

#include <cstdint>

#include "tvb/clock_rate.h"
#include "tvb/finding.h"
#include "tvb/record_view.h"

namespace tvb {

// What a field of a run-test says, its offset taken away.
struct RunTestField {
  bool valid = false;         // its number is none below its offset, negative or too long
  uint64_t microseconds = 0;  // a time in microseconds
  uint64_t milliseconds = 0;  // or in milliseconds
  uint64_t cycles = 0;        // or a number of cycles
};

// Reads a field of a run-test: CYCLES or TIME.
RunTestField ReadRunTestField(const FieldView &field);

// The clocks that the player makes of a run-test's fields at `hz`; those that are not valid left
// out. A sum past 2^31 - 1 is more than it can count.
uint64_t ClocksOf(const RecordView &record, uint64_t hz);

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
  bool cleared_ = false;  // a FREQUENCY 0 has been seen
  bool told_carry_over_ = false;
};

}  // namespace tvb
