// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/record.h"

#include <string>

#include "tvb/error.h"
#include "tvb/number.h"

namespace tvb {
namespace {

void CheckSize(const char *field, Bytes bytes, uint32_t bits) {
  if (bytes.size() != BytesOfBits(bits)) {
    throw Error(std::string(field) + " of " + std::to_string(bits) + " bits takes " +
                std::to_string(BytesOfBits(bits)) + " bytes, not " + std::to_string(bytes.size()));
  }
}

void CheckShift(const Shift &shift) {
  CheckSize("TDI", shift.tdi, shift.bits);
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

void AppendField(Buffer &body, Tag tag, Bytes data, const BlockFormat &format) {
  if (data.empty()) {
    return;
  }
  body.push_back(tag);
  if (format.plain) {
    Append(body, data);
  } else {
    Append(body, EncodeBlock(data, format.choice));
  }
}

}  // namespace

void AppendRecord(Buffer &file, uint8_t opcode, Bytes body) {
  uint64_t length = 8 * (1 + static_cast<uint64_t>(body.size()));
  if (length > kLargestNumber) {
    throw Error("a record of " + std::to_string(body.size()) +
                " bytes is too long for the file's lengths; split the shift");
  }
  file.push_back('^');
  AppendNumber(file, static_cast<uint32_t>(length));
  file.push_back(opcode);
  Append(file, body);
}

Buffer ShiftBody(const Shift &shift, const BlockFormat &format) {
  CheckShift(shift);
  Buffer body;
  AppendNumber(body, shift.bits);
  AppendField(body, kTagTdi, shift.tdi, format);
  AppendField(body, kTagTdo, shift.tdo, format);
  AppendField(body, kTagMask, shift.mask, format);
  body.push_back(kTagEnd);
  return body;
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

}  // namespace tvb
