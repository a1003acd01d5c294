// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/register_check.h"

#include <algorithm>
#include <string>

#include "tvb/names.h"
#include "tvb/text.h"

namespace tvb {
namespace {

std::string DataName(const FieldView &field) {
  return std::string(TagName(field.tag)) + " data";
}

std::string EncodedAs(const BlockView &block) {
  return block.mode ? std::string(" (") + EncodingName(*block.mode) + ")" : "";
}

std::string Shortage(const BlockView &block) {
  if (block.codec()->shortage_text) {
    return block.codec()->shortage_text(block);
  }
  return "decodes to " + std::to_string(block.written) + " of the " + Count(block.count, "byte") +
         " that its register takes";
}

std::string Surplus(const BlockView &block) {
  return "decodes to " + Count(block.count + block.surplus, "byte") + ", but its register takes " +
         std::to_string(block.count);
}

bool CheckBlock(const RecordView &record, const FieldView &field, Findings &findings) {
  const BlockView &block = *field.block;
  if (block.fault) {
    findings.Broken(record, block.fault->offset, DataName(field) + ": " + block.fault->message);
  } else if (block.written < block.count) {
    findings.Broken(record, block.offset,
                    DataName(field) + EncodedAs(block) + ": " + Shortage(block));
  } else if (block.surplus > 0) {
    findings.Broken(record, block.offset,
                    DataName(field) + EncodedAs(block) + ": " + Surplus(block));
  }
  return block.Exact();
}

// A block cut off by the end of the image is reported as the record's own fault.
bool IsCutOff(const RecordView &record, const BlockView &block) {
  return record.fault && block.offset + block.size > record.fault->offset;
}

bool CheckBlocks(const RecordView &record, Findings &findings) {
  bool exact = true;
  for (const FieldView &field : record.fields) {
    if (field.block && !IsCutOff(record, *field.block)) {
      exact = CheckBlock(record, field, findings) && exact;
    }
  }
  return exact;
}

void CheckRepeats(const RecordView &record, Findings &findings) {
  for (Tag tag : {kTagTdi, kTagTdo, kTagMask}) {
    auto has_tag = [tag](const FieldView &field) { return field.tag == tag; };
    if (std::count_if(record.fields.begin(), record.fields.end(), has_tag) > 1) {
      findings.Warn(record,
                    std::string(TagName(tag)) +
                        " is given more than once; the last one counts, leave out the others");
    }
  }
}

void CheckCompared(Bytes image, const RecordView &record, Findings &findings) {
  const BlockView *tdo = record.Block(kTagTdo);
  const BlockView *mask = record.Block(kTagMask);
  if (mask && !tdo) {
    findings.Error(record,
                   "MASK without TDO: the player compares with zeros; give the expected TDO");
  } else if (tdo && !mask) {
    findings.Warn(record, "TDO without MASK: the player compares nothing; give a MASK");
  } else if (mask && record.bits() > 0) {
    Buffer bits = DecodeBlock(image, *mask);
    bits.back() &= static_cast<uint8_t>(0xFF << (7 - (record.bits() - 1) % 8));
    if (std::all_of(bits.begin(), bits.end(), [](uint8_t byte) { return byte == 0; })) {
      findings.Warn(record, "MASK is all zeros: nothing of TDO is compared");
    }
  }
}

bool CheckHeld(const RecordView &record, uint64_t clocks, Findings &findings) {
  if (clocks <= kMaxScanClocks) {
    return true;
  }
  findings.Broken(record, record.value->offset,
                  std::string(OpcodeName(record.opcode)) + " of " + Count(record.bits(), "bit") +
                      " takes " + std::to_string(clocks) + " clocks in all, but the player holds " +
                      std::to_string(kMaxScanClocks) + "; split it");
  return false;
}

bool CheckRegisterLength(const RecordView &record, Findings &findings) {
  if (!record.value || (record.value->value >= 0 && !record.value->lossy)) {
    return true;
  }
  findings.Broken(
      record, record.value->offset,
      "register length of " + NumberText(*record.value) + "; expected 0 to 2147483647 bits");
  return false;
}

void CheckShift(Bytes image, const RecordView &record, const PadBits &pads, Findings &findings) {
  if (!CheckHeld(record, ScanClocks(record, pads), findings)) {
    return;
  }
  // The last bit carries the TMS level that leaves Shift; without a bit, nothing leaves it.
  if (record.bits() == 0 && pads.trailer(record.opcode) == 0) {
    findings.Broken(
        record, record.offset,
        "a shift of 0 bits without a trailer leaves the TAP in a pause state instead of "
        "Run-Test/Idle; leave it out");
  } else if (record.bits() > 0 && !record.Block(kTagTdi)) {
    findings.Error(record, "a shift without TDI: the player shifts zeros; give the TDI");
  }
  CheckRepeats(record, findings);
  CheckCompared(image, record, findings);
}

// Returns false if the record is broken.
bool CheckPad(const RecordView &record, Findings &findings) {
  if (!CheckHeld(record, record.bits(), findings)) {
    return false;
  }
  if (record.bits() == 0) {
    return true;
  }
  const FieldView &field = record.fields.front();
  if (field.tag != kTagTdi) {
    findings.Broken(record, field.offset,
                    "tag " + Hex(field.tag) + " in a header or trailer; expected 15 (TDI) and " +
                        Count(BytesOfBits(record.bits()), "byte"));
    return false;
  }
  if (record.closing != kTagEnd) {
    findings.Error(record, "a header or trailer that closes with " + Hex(*record.closing) +
                               "; expected the end tag 23");
  }
  return true;
}

}  // namespace

bool CheckRegisters(Bytes image, const RecordView &record, const PadBits &pads,
                    Findings &findings) {
  if (!CheckRegisterLength(record, findings) || !CheckBlocks(record, findings)) {
    return false;
  }
  if (record.fault) {
    return true;
  }
  if (record.IsPad()) {
    return CheckPad(record, findings);
  }
  CheckShift(image, record, pads, findings);
  return true;
}

}  // namespace tvb
