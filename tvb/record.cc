// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/record.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "tvb/error.h"
#include "tvb/number.h"
#include "tvb/player.h"

namespace tvb {
namespace {

// Puts the mark, the length and the opcode of a record at the end of `room`; returns them.
Bytes PutFront(std::span<uint8_t, kRecordFront> room, uint8_t opcode, size_t body) {
  const uint64_t length = 8 * (1 + static_cast<uint64_t>(body));
  if (length > kMaxNumber) {
    throw Error("a record of " + std::to_string(body) +
                " bytes is too long for the file's lengths; split the shift");
  }
  uint8_t *const end = room.data() + room.size();
  uint8_t *const number = end - 1 - NumberSize(static_cast<uint32_t>(length));
  number[-1] = kMark;
  PutNumber(number, static_cast<uint32_t>(length));
  end[-1] = opcode;
  return {number - 1, end};
}

void CheckSize(const char *field, Bytes bytes, uint32_t bits) {
  if (bytes.size() != BytesOfBits(bits)) {
    throw Error(std::string(field) + " of " + std::to_string(bits) + " bits takes " +
                std::to_string(BytesOfBits(bits)) + " bytes, not " + std::to_string(bytes.size()));
  }
}

void CheckShift(const Shift &shift) {
  CheckSize("TDI", shift.tdi, shift.bits);
  if (!shift.care.empty()) {
    CheckSize("what is known of TDI", shift.care, shift.bits);
  }
  if (!shift.tdo.empty()) {
    CheckSize("TDO", shift.tdo, shift.bits);
  }
  if (shift.mask.empty()) {
    return;
  }
  CheckSize("MASK", shift.mask, shift.bits);
  if (shift.tdo.empty()) {
    throw Error("a MASK without TDO has nothing to compare with; give the expected TDO too");
  }
}

// Appends the fields of a shift to its body.
struct FieldWriter {
  Buffer &body;
  uint32_t bits;
  const Encoder &encode;

  void Append(Tag tag, Bytes data, Bytes care) const {
    if (data.empty()) {
      return;
    }
    body.push_back(tag);
    if (encode) {
      encode(body, bits, data, care);
    } else {
      tvb::Append(body, data);
    }
  }
};

constexpr uint8_t kRuns = 1;
constexpr uint8_t kDoesNotRun = 0;

RunTestField Split(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz) {
  RunTestField fields;
  fields.cycles = cycles;
  if (microseconds <= kMaxMicroseconds) {
    fields.microseconds = microseconds;
    return fields;
  }
  fields.milliseconds = microseconds / 1000;
  fields.microseconds = microseconds % 1000;
  if (fields.microseconds != 0 && !whole_kilohertz) {
    ++fields.cycles;
  }
  return fields;
}

void CheckRunTest(uint64_t microseconds, uint64_t cycles) {
  if (microseconds > kMaxTime) {
    throw Error("a run-test of " + std::to_string(microseconds) +
                " microseconds does not fit into a record; write several run-tests");
  }
  if (cycles > kMaxCycles) {
    throw Error("a run-test of " + std::to_string(cycles) +
                " cycles is more than the player can count; write several run-tests");
  }
}

void AppendNumberField(Buffer &body, Tag tag, uint32_t stored) {
  body.push_back(tag);
  AppendNumber(body, stored);
}

}  // namespace

void AppendRecord(Buffer &file, uint8_t opcode, Bytes body) {
  std::array<uint8_t, kRecordFront> room;
  Append(file, PutFront(room, opcode, body.size()));
  Append(file, body);
}

Bytes FrameRecord(Buffer &record, uint8_t opcode) {
  const std::span<uint8_t, kRecordFront> room(record.data(), kRecordFront);
  const Bytes front = PutFront(room, opcode, record.size() - kRecordFront);
  return {front.data(), record.data() + record.size()};
}

void AppendShiftBody(Buffer &body, const Shift &shift, const Encoder &encode) {
  CheckShift(shift);
  AppendNumber(body, shift.bits);
  const FieldWriter fields = {body, shift.bits, encode};
  fields.Append(kTagTdi, shift.tdi, shift.care);
  fields.Append(kTagTdo, shift.tdo, shift.free_tdo ? shift.mask : Bytes());
  fields.Append(kTagMask, shift.mask, {});
  body.push_back(kTagEnd);
}

Buffer PadBody(uint32_t bits, Bytes data) {
  CheckSize("a header or trailer register", data, bits);
  Buffer body = NumberBody(bits);
  if (bits > 0) {
    body.push_back(kTagTdi);
    Append(body, data);
    body.push_back(kTagEnd);
  }
  return body;
}

Buffer NumberBody(uint32_t value) {
  Buffer body;
  AppendNumber(body, value);
  return body;
}

Buffer RunTestBody(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz) {
  const RunTestField fields = Split(microseconds, cycles, whole_kilohertz);
  CheckRunTest(microseconds, fields.cycles);
  Buffer body = {kRuns};
  if (fields.milliseconds > 0) {
    AppendNumberField(body, kTagTime, StoredMilliseconds(fields.milliseconds));
  }
  if (fields.microseconds > 0) {
    AppendNumberField(body, kTagTime, StoredMicroseconds(fields.microseconds));
  }
  if (fields.cycles > 0 || microseconds == 0) {
    const uint64_t first = std::min(fields.cycles, kMaxFieldCycles);
    AppendNumberField(body, kTagCycles, StoredCycles(first));
    if (fields.cycles > first) {
      AppendNumberField(body, kTagCycles, StoredCycles(fields.cycles - first));
    }
  }
  body.push_back(kTagEnd);
  return body;
}

uint64_t RunTestClocks(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz, uint32_t hz) {
  return RunTestClocks(Split(microseconds, cycles, whole_kilohertz), hz);
}

Buffer IdleRunTestBody() {
  return {kDoesNotRun};
}

}  // namespace tvb
