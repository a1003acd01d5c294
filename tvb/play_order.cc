// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/play_order.h"

namespace tvb {

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

PlayOrder::PlayOrder(Bytes image, const HeaderView &header)
    : image_(image), plain_(header.plain()), position_(header.size) {}

std::optional<PlayedRecord> PlayOrder::Next() {
  if (faulted_ || position_ >= image_.size() || image_[static_cast<size_t>(position_)] != '^') {
    return std::nullopt;
  }
  PlayedRecord played;
  played.record = ReadRecord(image_, plain_, position_, ++index_);
  const RecordView &record = played.record;
  faulted_ = record.fault.has_value();
  position_ = record.end;
  if (!faulted_) {
    pads_.Apply(record);
  }
  played.step = ++step_;
  played.loop = record.opcode == kLoop ? 0 : loop_;
  if (played.loop != 0) {
    played.passes = passes_;
    played.pass = passes_ - static_cast<uint64_t>(counter_ < 1 ? 0 : counter_ - 1);
  }
  FollowLoop(record);
  return played;
}

void PlayOrder::FollowLoop(const RecordView &record) {
  if (record.opcode == kLoop) {
    counter_ = static_cast<int32_t>(record.bits());
    passes_ = counter_ < 1 ? 1 : static_cast<uint64_t>(counter_);
    loop_start_ = position_;
    loop_index_ = record.index;
    loop_ = record.index;
  } else if (record.opcode == kEndLoop && counter_ >= 2) {
    --counter_;
    position_ = loop_start_;
    index_ = loop_index_;
  } else if (record.opcode == kEndLoop) {
    loop_ = 0;
  }
}

}  // namespace tvb
