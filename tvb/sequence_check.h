// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Checks what records mean together: loops, the chain, frequencies and run-tests, and the end of
// the file.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/finding.h"
#include "tvb/player.h"
#include "tvb/reader.h"

namespace tvb {

// Loops do not nest: the player has one counter.
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

// Headers and trailers tell what the first record should have told, and outlive the file.
class ChainCheck {
 public:
  explicit ChainCheck(Findings &findings) : findings_(findings) {}

  // The first record of the file, whatever it is.
  void First(Bytes image, const RecordView &record);

  // A header or trailer record.
  void Pad(const RecordView &record);
  void EndOfFile();

  // What is in force.
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

// A failed comparison shows when the next record starts.
void CheckLastRecord(const RecordView &record, Findings &findings);

}  // namespace tvb
