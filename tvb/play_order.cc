// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/play_order.h"

#include <algorithm>

namespace tvb {
namespace {

// The number of times that the body of a loop is played.
uint64_t PassesOf(const RecordView &loop) {
  return static_cast<uint64_t>(std::max(static_cast<int32_t>(loop.bits()), 1));
}

}  // namespace

PlayOrder::PlayOrder(Bytes image, const HeaderView &header, const Player &player)
    : image_(image), plain_(header.plain()), position_(header.size), player_(player) {}

std::optional<PlayedRecord> PlayOrder::Next() {
  std::optional<PlayedRecord> next;
  if (faulted_ || position_ >= image_.size() || image_[static_cast<size_t>(position_)] != kMark) {
    return next;
  }
  PlayedRecord &played = next.emplace();
  ReadRecord(image_, plain_, position_, ++index_, played.record);
  const RecordView &record = played.record;
  faulted_ = record.fault.has_value();
  position_ = record.end;
  if (!faulted_) {
    played.clocks = player_.Play(record);
  }
  played.step = ++step_;
  played.loop = record.opcode == kLoop ? 0 : loop_;
  if (played.loop != 0) {
    played.passes = passes_;
    played.pass = passes_ - static_cast<uint64_t>(counter_ < 1 ? 0 : counter_ - 1);
  }
  FollowLoop(record);
  return next;
}

void PlayOrder::FollowLoop(const RecordView &record) {
  if (record.opcode == kLoop) {
    counter_ = static_cast<int32_t>(record.bits());
    passes_ = PassesOf(record);
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

std::optional<RecordView> FindScan(Bytes image, const HeaderView &header, uint64_t number) {
  Reader reader(image, header);
  Reader body = reader;
  uint64_t body_scans = 0;
  uint64_t passes = 1;
  std::optional<RecordView> record;
  while ((record = reader.Next()) && !record->fault) {
    if (record->IsShift() && --number == 0) {
      return record;
    }
    body_scans += record->IsShift();
    if (record->opcode == kLoop) {
      body = reader;
      body_scans = 0;
      passes = PassesOf(*record);
    } else if (record->opcode == kEndLoop) {
      const uint64_t repeated = body_scans * (passes - 1);
      passes = 1;
      if (number <= repeated) {
        number = (number - 1) % body_scans + 1;
        reader = body;
        body_scans = 0;
      } else {
        number -= repeated;
      }
    }
  }
  return std::nullopt;
}

PlayLength MeasurePlay(Bytes image, const HeaderView &header) {
  Player player;
  PlayLength length;
  PlayLength loop_start;
  uint64_t passes = 1;
  Reader reader(image, header);
  while (const std::optional<RecordView> record = reader.Next()) {
    ++length.records;
    length.clocks += record->fault ? 0 : player.Play(*record);
    if (record->opcode == kLoop) {
      loop_start = length;
      passes = PassesOf(*record);
    } else if (record->opcode == kEndLoop) {
      length.clocks += (length.clocks - loop_start.clocks) * (passes - 1);
      length.records += (length.records - loop_start.records) * (passes - 1);
      passes = 1;
    }
  }
  return length;
}

ChainPlace TargetOf(Bytes image, const HeaderView &header) {
  const std::optional<RecordView> first = Reader(image, header).Next();
  return first ? PlaceToldBy(image, *first) : ChainPlace();
}

uint64_t DownloadClocks(Bytes image, const HeaderView &header) {
  return OwnClocks(TargetOf(image, header)) + MeasurePlay(image, header).clocks;
}

}  // namespace tvb
