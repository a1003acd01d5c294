// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The player's rules: what it does with a file's records, and what it keeps from one file to the
// next. All code that writes, checks or measures files uses them. The driver has its own
// implementation; a test plays files with both.
#pragma once

#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/number.h"
#include "tvb/reader.h"

namespace tvb {

// Lengths of the four header and trailer registers in bits.
struct PadBits {
  uint32_t hir = 0;
  uint32_t tir = 0;
  uint32_t hdr = 0;
  uint32_t tdr = 0;

  // Stores the length that `record` sets, if it is a header or trailer record.
  void Apply(const RecordView &record);

  // The lengths for an instruction scan (kSir) or a data scan.
  uint32_t header(uint8_t opcode) const {
    return opcode == kSir ? hir : hdr;
  }
  uint32_t trailer(uint8_t opcode) const {
    return opcode == kSir ? tir : tdr;
  }
  bool operator==(const PadBits &) const = default;
};

// The longest scan, in clocks. The player stores a scan as one byte per clock, and one more, in an
// allocation of at most 4 MiB.
constexpr uint64_t kMaxScanClocks = (4u << 20) - 1;

// The clocks of an instruction scan (kSir) or a data scan of `bits` bits, including header and
// trailer, from Run-Test/Idle back to it.
uint64_t ScanClocks(uint8_t opcode, uint64_t bits);

// The same for a shift record.
uint64_t ScanClocks(const RecordView &record, const PadBits &pads);

// The number of pin callback calls in a scan of `clocks` clocks, of which `bits` shift the record's
// own bits; `compared` of those bits are compared.
uint64_t ScanPinCalls(uint64_t clocks, uint64_t bits, uint64_t compared);

// The maximum number of clocks that the player can count in one run-test.
constexpr uint64_t kMaxCycles = kMaxNumber;

// The numbers of a run-test are stored with offsets: a cycle count n as n + 10 or, if that exceeds
// the marker 32768, as n + 32778; a time of n microseconds up to 32768 as n + 10, one of n
// milliseconds as n + 32778. The limits below are those of a single field.
constexpr uint64_t kRunTestOffset = 10;
constexpr uint64_t kRunTestMarker = 32768;
constexpr uint64_t kMaxMicroseconds = kRunTestMarker;
constexpr uint64_t kMaxMilliseconds = kMaxNumber - kRunTestMarker - kRunTestOffset;
constexpr uint64_t kMaxFieldCycles = kMaxNumber - kRunTestMarker - kRunTestOffset;

// The longest time, in microseconds: almost 25 days.
constexpr uint64_t kMaxTime = 1000 * kMaxMilliseconds;

uint32_t StoredMicroseconds(uint64_t microseconds);
uint32_t StoredMilliseconds(uint64_t milliseconds);
uint32_t StoredCycles(uint64_t cycles);

// The contents of a run-test's fields, either one of them or all together.
struct RunTestField {
  bool valid = false;  // its number is neither below its offset, negative nor too long
  uint64_t microseconds = 0;
  uint64_t milliseconds = 0;
  uint64_t cycles = 0;
};

// The contents of a run-test's CYCLES or TIME field; all 0 if it is not valid.
RunTestField ReadRunTestField(const FieldView &field);

// The clocks that `fields` take at `hz`. The player rounds each time down separately.
uint64_t RunTestClocks(const RunTestField &fields, uint64_t hz);

// True if whole milliseconds are whole clocks at `hz`: splitting a time into milliseconds and
// microseconds then loses nothing.
constexpr bool IsWholeKilohertz(uint32_t hz) {
  return hz % 1000 == 0;
}

// The same for the fields of a run-test record that runs, whatever numbers they hold. A sum above
// kMaxCycles is more than the player can count: it then runs as many clocks as the low 32 bits say,
// or none if those are negative.
uint64_t RunTestClocks(const RecordView &record, uint64_t hz);

// The number of pin callback calls in a run-test of `clocks` clocks.
uint64_t RunTestPinCalls(uint64_t clocks);

// The unit in which the player waits, in nanoseconds.
constexpr uint64_t kWaitUnit = 100000;

// How long the player waits, in nanoseconds, at the end of a run-test of `clocks` clocks at `hz`
// that took `elapsed_ns` nanoseconds: the time still missing, in whole units of 100 us.
uint64_t RunTestWait(uint64_t clocks, uint32_t hz, uint64_t elapsed_ns);

// The frequency that a run-test sets if none is set, in Hz.
constexpr uint32_t kDefaultHz = 1000000;

// The frequency of run-tests where files have set none but `limit`; 0: none at all.
constexpr uint32_t HzWithin(uint32_t limit) {
  return limit != 0 ? limit : kDefaultHz;
}

// The TCK frequency in force, in Hz, below 2^31, as far as it is known. The player keeps the lowest
// frequency that any file has set since it was loaded, until a file sets 0, which means unset. A
// run-test that finds it unset sets it to kDefaultHz, which then stays.
class ClockRate {
 public:
  // At the start of a file: nothing is certain until the file itself sets 0.
  ClockRate() = default;

  // In a freshly loaded player: unset.
  static ClockRate AtLoad();

  // A FREQUENCY record of `hz`.
  void Set(uint32_t hz);

  // A RUNTEST record.
  void Run();

  // True if no frequency set by earlier files can still be in force.
  bool certain() const {
    return certain_;
  }

  // The frequency in force, if it is certain and set.
  std::optional<uint32_t> Exact() const;

  // An upper bound of the frequency in force, if one is known.
  std::optional<uint32_t> Highest() const;

  // The frequency that clocks run-tests, or its upper bound; kDefaultHz if nothing is known.
  uint32_t Clocked() const {
    return Highest().value_or(kDefaultHz);
  }

 private:
  bool certain_ = false;
  uint32_t lowest_ = 0;  // since certain, or set by this file; 0: none yet
};

// The target's place in the chain.
struct ChainPlace {
  uint32_t before = 0;  // devices between TDI and the target
  uint32_t after = 0;   // devices between the target and TDO

  bool IsAlone() const {
    return before == 0 && after == 0;
  }
  uint64_t devices() const {
    return uint64_t{before} + 1 + after;
  }
  bool operator==(const ChainPlace &) const = default;
};

// The player takes every instruction register to have 8 bits. Instructions, least significant bit
// out first: the one for all devices but the target; the one that reads the target's IDCODE; and
// the one that does so from the first download whose first record uses it.
constexpr uint32_t kInstructionBits = 8;
constexpr uint8_t kBypass = 0xFF;
constexpr uint8_t kIdcode = 6;
constexpr uint8_t kOtherIdcode = 0xE0;

// The byte of a file that shifts `instruction`.
uint8_t InstructionByte(uint8_t instruction);

// The place that the player derives from the instructions of a scan, in shift order (that of
// Bytes): each BYPASS at the end counts a device before the target, every other BYPASS a device
// after it.
ChainPlace PlaceToldBy(Bytes instructions);

// The place that the player derives from a file's first record, the only one it examines: from the
// instructions of an SIR, or from the length of a TDR or HDR.
ChainPlace PlaceToldBy(Bytes image, const RecordView &first);

// The instructions of a scan that loads `instruction` into the target and BYPASS into all other
// devices. As the first record of a file, that scan tells the player `place`, unless `instruction`
// is BYPASS.
Buffer ChainInstructions(const ChainPlace &place, uint8_t instruction);

// The clocks of what the player does by itself before a file's first record: a reset of the TAP,
// and the read of the target's IDCODE.
uint64_t OwnClocks(const ChainPlace &place);

// A model of the player: the state that records change and that it keeps from one file to the next.
class Player {
 public:
  // A freshly loaded player.
  Player() : rate_(ClockRate::AtLoad()) {}

  // Plays a record without a fault, once. Returns its clocks.
  uint64_t Play(const RecordView &record);

  // The file was played to its end: header and trailer data are discarded. If the player stops
  // within a file, they stay.
  void EndFile() {
    pads_ = {};
  }

  // The registers in force: after a shift, the header and trailer that surrounded it.
  const PadBits &pads() const {
    return pads_;
  }

  // The lengths that the player has stored. They stay until records change them; where they differ
  // from pads(), they displace the data of shifts.
  const PadBits &pad_lengths() const {
    return pad_lengths_;
  }

  const ClockRate &rate() const {
    return rate_;
  }

 private:
  PadBits pads_;
  PadBits pad_lengths_;
  ClockRate rate_;
};

}  // namespace tvb
