// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/reader.h"

#include <string>

#include "tvb/names.h"
#include "tvb/text.h"

namespace tvb {
namespace {

constexpr size_t kUsualFields = 3;

// Reads the body of one record, whose opcode has been read, into its view.
class BodyReader {
 public:
  BodyReader(Cursor &cursor, RecordView &record) : cursor_(cursor), record_(record) {}

  void Read(bool plain) {
    switch (record_.opcode) {
      case kSir:
      case kSdr:
        return ReadShift(plain);
      case kTdr:
      case kTir:
      case kHdr:
      case kHir:
        return ReadPad();
      case kRunTest:
        return ReadRunTest();
      case kFrequency:
      case kLoop:
        record_.value = cursor_.Number();
        return;
      case kEndLoop:
        return;
    }
    if (IsReserved(record_.opcode)) {
      return SkipByLength();
    }
    Fail(record_.opcode_offset, "unknown opcode " + Hex(record_.opcode) +
                                    "; expected 1, 4 to 7, 9 to 14, 19, 36 (LOOP) or 37 (ENDLOOP)");
  }

 private:
  void ReadShift(bool plain) {
    record_.value = cursor_.Number();
    while (!cursor_.past_end() && !record_.fault) {
      const uint64_t offset = cursor_.position();
      const uint8_t tag = cursor_.Byte();
      if (tag == kTagEnd) {
        record_.closing = tag;
        return;
      }
      if (tag < kTagTdi || tag > kTagMask) {
        return Fail(offset, "tag " + Hex(tag) +
                                " in a shift; expected 15 (TDI), 16 (TDO), 17 (MASK) or the "
                                "end tag 23");
      }
      FieldView &field = AddField(tag, offset);
      field.block = MeasureBlock(cursor_, BytesOfBits(record_.bits()), plain);
      LimitFields();
    }
  }

  void ReadPad() {
    record_.value = cursor_.Number();
    if (record_.bits() == 0) {
      return;
    }
    const uint64_t offset = cursor_.position();
    FieldView &field = AddField(cursor_.Byte(), offset);
    if (field.tag == kTagTdi) {
      field.block = MeasureBlock(cursor_, BytesOfBits(record_.bits()), true);
    }
    record_.closing = cursor_.Byte();
  }

  void ReadRunTest() {
    record_.gate = cursor_.Byte();
    if (!record_.Runs()) {
      return;
    }
    // At the end of the image the player reads one more byte, which ends the body.
    while (!cursor_.AtEnd() && !record_.fault) {
      const uint64_t offset = cursor_.position();
      const uint8_t tag = cursor_.Byte();
      if (tag == kMark) {
        return cursor_.StepBack();
      }
      if (tag != kTagPass && tag != kTagTime && tag != kTagCycles) {
        record_.closing = tag;
        return;
      }
      FieldView &field = AddField(tag, offset);
      if (tag != kTagPass) {
        field.number = cursor_.Number();
      }
      LimitFields();
    }
  }

  void SkipByLength() {
    if (record_.length.value < 0) {
      return Fail(record_.length.offset, "negative length " + NumberText(record_.length) +
                                             ": the player cannot skip the record by it");
    }
    cursor_ = Cursor(cursor_.image(), static_cast<uint64_t>(record_.EndByLength()));
  }

  FieldView &AddField(uint8_t tag, uint64_t offset) {
    if (record_.fields.empty()) {
      record_.fields.reserve(kUsualFields);
    }
    FieldView &field = record_.fields.emplace_back();
    field.tag = tag;
    field.offset = offset;
    return field;
  }

  // Takes the last field back if it is one too many.
  void LimitFields() {
    if (record_.fields.size() > kMaxFields) {
      const uint64_t offset = record_.fields.back().offset;
      record_.fields.pop_back();
      Fail(offset, "more than " + Count(kMaxFields, "field") + " in one record");
    }
  }

  void Fail(uint64_t offset, const std::string &message) {
    record_.fault = {offset, message};
  }

  Cursor &cursor_;
  RecordView &record_;
};

// The part of a record that the image's end cuts off.
std::string LastPart(const RecordView &record) {
  if (record.fields.empty() || !record.fields.back().block || !record.fields.back().block->fault) {
    return "this record";
  }
  return std::string("the ") + TagName(record.fields.back().tag) + " data of this record";
}

}  // namespace

const BlockView *RecordView::Block(Tag tag) const {
  for (auto field = fields.rbegin(); field != fields.rend(); ++field) {
    if (field->tag == tag && field->block) {
      return &*field->block;
    }
  }
  return nullptr;
}

RecordView ReadRecord(Bytes image, bool plain, uint64_t offset, uint64_t index) {
  RecordView record;
  ReadRecord(image, plain, offset, index, record);
  return record;
}

void ReadRecord(Bytes image, bool plain, uint64_t offset, uint64_t index, RecordView &record) {
  record.index = index;
  record.offset = offset;
  Cursor cursor(image, offset + 1);
  record.length = cursor.Number();
  record.opcode_offset = cursor.position();
  record.opcode = cursor.Byte();
  if (!cursor.past_end()) {
    BodyReader(cursor, record).Read(plain);
  }
  record.end = cursor.position();
  if (cursor.past_end()) {
    record.end = image.size();
    record.fault = {image.size(), "the file ends inside " + LastPart(record) +
                                      ", which begins at " + Hex(offset)};
  } else if (record.fault) {
    record.end = record.fault->offset;
  }
}

Buffer FieldData(Bytes image, const RecordView &record, Tag tag) {
  const BlockView *block = record.Block(tag);
  return block ? DecodeBlock(image, *block) : Buffer();
}

std::optional<RecordView> Reader::Next() {
  std::optional<RecordView> record;
  if (faulted_ || position_ >= image_.size() || image_[static_cast<size_t>(position_)] != kMark) {
    return record;
  }
  ReadRecord(image_, plain_, position_, ++records_, record.emplace());
  position_ = record->end;
  faulted_ = record->fault.has_value();
  return record;
}

}  // namespace tvb
