// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/player.h"

#include <algorithm>

namespace tvb {
namespace {

// Clocks from Run-Test/Idle to the Shift state, and from the last bit back.
constexpr uint64_t kWalkToShiftIr = 4;
constexpr uint64_t kWalkToShiftDr = 3;
constexpr uint64_t kWalkBack = 2;

// Uses the player's arithmetic, modulo 2^64.
RunTestField TimeField(uint64_t stored) {
  RunTestField field;
  const uint64_t time = stored - kRunTestOffset;
  (time > kRunTestMarker ? field.milliseconds : field.microseconds) =
      time > kRunTestMarker ? time - kRunTestMarker : time;
  return field;
}

RunTestField CyclesField(uint64_t stored) {
  RunTestField field;
  field.cycles = (stored > kRunTestMarker ? stored - kRunTestMarker : stored) - kRunTestOffset;
  return field;
}

// All 0 for a field without a number.
RunTestField AnyField(const FieldView &view) {
  if (!view.number) {
    return {};
  }
  const uint64_t stored = static_cast<uint64_t>(view.number->value);
  return view.tag == kTagTime ? TimeField(stored) : CyclesField(stored);
}

}  // namespace

void PadBits::Apply(const RecordView &record) {
  switch (record.opcode) {
    case kHir:
      hir = record.bits();
      break;
    case kTir:
      tir = record.bits();
      break;
    case kHdr:
      hdr = record.bits();
      break;
    case kTdr:
      tdr = record.bits();
      break;
  }
}

uint64_t ScanClocks(uint8_t opcode, uint64_t bits) {
  return (opcode == kSir ? kWalkToShiftIr : kWalkToShiftDr) + bits + kWalkBack;
}

uint64_t ScanClocks(const RecordView &record, const PadBits &pads) {
  return ScanClocks(record.opcode, uint64_t{record.bits()} + pads.header(record.opcode) +
                                       pads.trailer(record.opcode));
}

// TCK is written twice per clock, TDI with each of the record's bits. TMS is written with all other
// clocks, and at the first and the last bit.
uint64_t ScanPinCalls(uint64_t clocks, uint64_t bits, uint64_t compared) {
  return 2 * clocks + bits + (clocks - bits) + std::min<uint64_t>(bits, 2) + compared;
}

RunTestField ReadRunTestField(const FieldView &view) {
  if (!view.number || view.number->value < static_cast<int64_t>(kRunTestOffset) ||
      view.number->lossy) {
    return {};
  }
  RunTestField field = AnyField(view);
  // A cycle count with the marker may still be below the offset.
  field.valid = field.cycles <= kMaxCycles;
  return field.valid ? field : RunTestField();
}

uint32_t StoredMicroseconds(uint64_t microseconds) {
  return static_cast<uint32_t>(microseconds + kRunTestOffset);
}

uint32_t StoredMilliseconds(uint64_t milliseconds) {
  return static_cast<uint32_t>(milliseconds + kRunTestMarker + kRunTestOffset);
}

uint32_t StoredCycles(uint64_t cycles) {
  const uint64_t stored = cycles + kRunTestOffset;
  return static_cast<uint32_t>(stored > kRunTestMarker ? stored + kRunTestMarker : stored);
}

uint64_t RunTestClocks(const RunTestField &fields, uint64_t hz) {
  return hz * fields.milliseconds / 1000 + hz * fields.microseconds / 1000000 + fields.cycles;
}

uint64_t RunTestClocks(const RecordView &record, uint64_t hz) {
  uint64_t clocks = 0;
  for (const FieldView &field : record.fields) {
    clocks += RunTestClocks(AnyField(field), hz);
  }
  return clocks;
}

// TDI and TMS are set low before the first clock.
uint64_t RunTestPinCalls(uint64_t clocks) {
  return 2 + 2 * clocks;
}

uint64_t RunTestWait(uint64_t clocks, uint32_t hz, uint64_t elapsed_ns) {
  const uint64_t required = clocks * 1000000 / hz + 1;
  if (elapsed_ns >= 1000 * required) {
    return 0;
  }
  const uint64_t units = (required - elapsed_ns / 1000) / (kWaitUnit / 1000) + 1;
  return kWaitUnit * units;
}

ClockRate ClockRate::AtLoad() {
  ClockRate rate;
  rate.Set(0);
  return rate;
}

void ClockRate::Set(uint32_t hz) {
  if (hz == 0) {
    certain_ = true;
    lowest_ = 0;
  } else if (lowest_ == 0 || hz < lowest_) {
    lowest_ = hz;
  }
}

void ClockRate::Run() {
  if (certain_ && lowest_ == 0) {
    lowest_ = kDefaultHz;
  }
}

std::optional<uint32_t> ClockRate::Exact() const {
  return certain_ ? Highest() : std::nullopt;
}

std::optional<uint32_t> ClockRate::Highest() const {
  return lowest_ != 0 ? std::optional<uint32_t>(lowest_) : std::nullopt;
}

uint8_t InstructionByte(uint8_t instruction) {
  uint8_t byte = 0;
  for (int bit = 0; bit < 8; ++bit) {
    byte |= static_cast<uint8_t>((instruction >> bit & 1) << (7 - bit));
  }
  return byte;
}

ChainPlace PlaceToldBy(Bytes instructions) {
  ChainPlace place;
  bool target_seen = false;
  // The last one shifted in is nearest to TDI.
  for (size_t i = instructions.size(); i-- > 0;) {
    if (instructions[i] != kBypass) {
      target_seen = true;
    } else {
      ++(target_seen ? place.after : place.before);
    }
  }
  return place;
}

ChainPlace PlaceToldBy(Bytes image, const RecordView &first) {
  if (first.fault) {
    return {};
  }
  if (first.opcode == kTdr) {
    return {first.bits(), 0};
  }
  if (first.opcode == kHdr) {
    return {0, first.bits()};
  }
  if (first.opcode == kSir && first.bits() <= kMaxScanClocks && !first.fields.empty() &&
      first.fields.front().tag == kTagTdi) {
    return PlaceToldBy(DecodeBlock(image, *first.fields.front().block));
  }
  return {};
}

// The first one shifted out ends up in the device nearest to TDO.
Buffer ChainInstructions(const ChainPlace &place, uint8_t instruction) {
  Buffer data(place.devices(), kBypass);
  data[place.after] = InstructionByte(instruction);
  return data;
}

uint64_t OwnClocks(const ChainPlace &place) {
  constexpr uint64_t kResetClocks = 11;
  constexpr uint64_t kIdcodeBits = 32;
  return kResetClocks + ScanClocks(kSir, kInstructionBits * place.devices()) +
         ScanClocks(kSdr, kIdcodeBits + place.after);
}

uint64_t Player::Play(const RecordView &record) {
  pads_.Apply(record);
  pad_lengths_.Apply(record);
  if (record.IsShift()) {
    return ScanClocks(record, pads_);
  }
  if (record.opcode == kFrequency) {
    rate_.Set(record.bits());
  }
  if (!record.Runs()) {
    return 0;
  }
  rate_.Run();
  const auto clocks = static_cast<int32_t>(RunTestClocks(record, rate_.Clocked()));
  return static_cast<uint64_t>(std::max(clocks, 0));
}

}  // namespace tvb
