// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The player's rules: what it makes of a file's records, and what it keeps from one file to the
// next. Whoever writes, checks or measures files asks here. The driver has code of its own; a test
// plays files by both.
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

  // Takes over what the record sets, if it is a header or trailer record.
  void Apply(const RecordView &record);

  // Those of an instruction scan (kSir) or a data scan.
  uint32_t header(uint8_t opcode) const {
    return opcode == kSir ? hir : hdr;
  }
  uint32_t trailer(uint8_t opcode) const {
    return opcode == kSir ? tir : tdr;
  }
  bool operator==(const PadBits &) const = default;
};

// The longest scan, in clocks. The player writes a scan down as one byte a clock, and one more, in
// an allocation of at most 4 MiB.
constexpr uint64_t kMaxScanClocks = (4u << 20) - 1;

// The clocks of an instruction scan (kSir) or a data scan of `bits` bits, header and trailer
// included, from Run-Test/Idle back to it.
uint64_t ScanClocks(uint8_t opcode, uint64_t bits);

// The same for a shift record.
uint64_t ScanClocks(const RecordView &record, const PadBits &pads);

// The calls of pin callbacks in a scan of so many clocks, of which `bits` shift the bits of its
// record and `compared` of those are compared.
uint64_t ScanPinCalls(uint64_t clocks, uint64_t bits, uint64_t compared);

// The most clocks that the player can count in one run-test.
constexpr uint64_t kMaxCycles = kMaxNumber;

// Numbers of a run-test are stored with offsets: a cycle count n as n + 10 and, where that passes
// the marker 32768, as n + 32778; a time of n microseconds up to 32768 as n + 10, one of n
// milliseconds as n + 32778. So much can one field hold.
constexpr uint64_t kRunTestOffset = 10;
constexpr uint64_t kRunTestMarker = 32768;
constexpr uint64_t kMaxMicroseconds = kRunTestMarker;
constexpr uint64_t kMaxMilliseconds = kMaxNumber - kRunTestMarker - kRunTestOffset;
constexpr uint64_t kMaxFieldCycles = kMaxNumber - kRunTestMarker - kRunTestOffset;

// The longest time of all, in microseconds: almost 25 days.
constexpr uint64_t kMaxTime = 1000 * kMaxMilliseconds;

uint32_t StoredMicroseconds(uint64_t microseconds);
uint32_t StoredMilliseconds(uint64_t milliseconds);
uint32_t StoredCycles(uint64_t cycles);

// What a run-test's fields say, one of them or all together.
struct RunTestField {
  bool valid = false;  // its number is none below its offset, negative or too long
  uint64_t microseconds = 0;
  uint64_t milliseconds = 0;
  uint64_t cycles = 0;
};

// What a field of a run-test, CYCLES or TIME, says; all 0 if it is not valid.
RunTestField ReadRunTestField(const FieldView &field);

// The clocks that the player makes of fields at `hz`. It rounds each time down by itself.
uint64_t RunTestClocks(const RunTestField &fields, uint64_t hz);

// True if whole milliseconds are whole clocks at `hz`: a time that is stored as milliseconds and
// microseconds then loses nothing by that.
constexpr bool IsWholeKilohertz(uint32_t hz) {
  return hz % 1000 == 0;
}

// The same for the fields of a run-test record that runs, whatever numbers they hold. A sum past
// kMaxCycles is more than the player can count: it then clocks as often as the low 32 bits say, or
// not at all if those are negative.
uint64_t RunTestClocks(const RecordView &record, uint64_t hz);

// The calls of pin callbacks in a run-test of so many clocks.
uint64_t RunTestPinCalls(uint64_t clocks);

// How long the player waits at the end of a run-test of so many clocks at `hz` that took
// `elapsed_ns` nanoseconds, in nanoseconds: for what is missing, in units of 100 us.
uint64_t RunTestWait(uint64_t clocks, uint32_t hz, uint64_t elapsed_ns);

// The frequency that a run-test makes of one that is not set, in Hz.
constexpr uint32_t kDefaultHz = 1000000;

// The TCK frequency in force, in Hz, below 2^31, as far as it is known. The player keeps the lowest
// that any file has set since it was loaded, until one sets 0, which means unset. A run-test that
// finds it unset makes it kDefaultHz, and that stays.
class ClockRate {
 public:
  // Before a file: nothing is certain until it has set 0 itself.
  ClockRate() = default;

  // In a player that has just been loaded: unset.
  static ClockRate AtLoad();

  // The file says: FREQUENCY `hz`.
  void Set(uint32_t hz);

  // The file says: RUNTEST.
  void Run();

  // True if nothing is left of what earlier files may have set.
  bool certain() const {
    return certain_;
  }

  // The frequency in force, if it is certain and set.
  std::optional<uint32_t> Exact() const;

  // A frequency that the one in force cannot exceed, if there is one.
  std::optional<uint32_t> Highest() const;

  // The frequency that run-tests are clocked at, or the highest that it can be; if nothing at all
  // is known of it, kDefaultHz.
  uint32_t Clocked() const {
    return Highest().value_or(kDefaultHz);
  }

 private:
  bool certain_ = false;
  uint32_t lowest_ = 0;  // since it is certain, or of this file's own; 0: none yet
};

// Where the target sits in the chain.
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

// Every instruction register has 8 bits to the player. Instructions, each with its least
// significant bit going out first: the one for all devices but the target; the one that reads the
// target's IDCODE; and the one that does so from the first download on whose first record has it.
constexpr uint32_t kInstructionBits = 8;
constexpr uint8_t kBypass = 0xFF;
constexpr uint8_t kIdcode = 6;
constexpr uint8_t kOtherIdcode = 0xE0;

// The byte of a file that shifts an instruction.
uint8_t InstructionByte(uint8_t instruction);

// The place that the player reads off the instructions of a scan in the order of shifting, which is
// the order of Bytes: those of BYPASS at its end stand for devices before the target, all others of
// BYPASS for devices after it.
ChainPlace PlaceToldBy(Bytes instructions);

// The place that the player takes from the first record of a file, all that it looks at for that:
// the instructions of an SIR, or the bits of a TDR or HDR.
ChainPlace PlaceToldBy(Bytes image, const RecordView &first);

// The instructions of a scan that loads `instruction` into the target and BYPASS into all other
// devices. As the first record of a file it tells `place`, if `instruction` is not BYPASS.
Buffer ChainInstructions(const ChainPlace &place, uint8_t instruction);

// A player, as far as records change it: what it keeps from one file to the next.
class Player {
 public:
  // As it is just loaded.
  Player() : rate_(ClockRate::AtLoad()) {}

  // Plays a record without fault, once. Returns its clocks.
  uint64_t Play(const RecordView &record);

  // The file has been played to its end: the bits of headers and trailers are gone. Of a file that
  // it stops in they stay.
  void EndFile() {
    pads_ = {};
  }

  // The registers in force: for a shift just played, the header and trailer that it is wrapped in.
  const PadBits &pads() const {
    return pads_;
  }

  // The lengths that the player holds them to have. These stay until records change them; where
  // they differ from pads(), they displace the data of shifts.
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
