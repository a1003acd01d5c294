// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks rules that span records: loops, the chain, frequencies and run-tests, and the end of the
// file.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/finding.h"
#include "tvb/player.h"
#include "tvb/reader.h"

namespace tvb {

// Checks loops, which do not nest: the player has a single counter.
class LoopCheck {
 public:
  explicit LoopCheck(Findings &findings) : findings_(findings) {}

  void Loop(const RecordView &record);
  void EndLoop(const RecordView &record);
  void EndOfFile();

 private:
  Findings &findings_;
  std::optional<RecordView> open_;
};

// Checks headers and trailers, which may reveal a place in the chain that the first record should
// have given, and which outlive the file.
class ChainCheck {
 public:
  explicit ChainCheck(Findings &findings) : findings_(findings) {}

  // The first record of the file, whatever it is.
  void First(Bytes image, const RecordView &record);

  // A header or trailer record.
  void Pad(const RecordView &record);
  void EndOfFile();

  // The header and trailer lengths in force.
  const PadBits &pads() const {
    return pads_;
  }

 private:
  Findings &findings_;
  ChainPlace told_;
  ChainPlace used_;
  PadBits pads_;
  std::optional<RecordView> first_pad_;
  std::optional<RecordView> last_pad_;
};

// Tracks the frequency through the file and checks run-tests.
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

// Checks the last record: the player sees a failed comparison only when the next record starts.
void CheckLastRecord(const RecordView &record, Findings &findings);

}  // namespace tvb
