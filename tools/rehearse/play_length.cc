// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/play_length.h"

#include <algorithm>

#include "tvb/play_order.h"
#include "tvb/reader.h"

namespace tool {
namespace {

constexpr uint64_t kFirstFrequency = 1000000;  // where a run-test finds none
constexpr uint64_t kOffset = 10;               // of a run-test's numbers
constexpr uint64_t kMarker = 32768;

// Walks the records once, counting those of a loop as often as it plays them.
class Counter {
 public:
  void Add(const tvb::RecordView &record) {
    pads_.Apply(record);
    ++length_.records;
    if (record.IsShift()) {
      length_.clocks += ShiftClocks(record);
    } else if (record.Runs()) {
      length_.clocks += RunClocks(record);
    } else if (record.opcode == tvb::kFrequency) {
      Limit(record.bits());
    } else if (record.opcode == tvb::kLoop) {
      loop_start_ = length_;
      passes_ = static_cast<uint64_t>(std::max(static_cast<int32_t>(record.bits()), 1));
    } else if (record.opcode == tvb::kEndLoop) {
      Repeat();
    }
  }

  const PlayLength &length() const {
    return length_;
  }

 private:
  uint64_t ShiftClocks(const tvb::RecordView &record) const {
    const uint64_t around = record.opcode == tvb::kSir ? 6 : 5;
    return around + pads_.header(record.opcode) + record.bits() + pads_.trailer(record.opcode);
  }

  uint64_t RunClocks(const tvb::RecordView &record) {
    frequency_ = frequency_ == 0 ? kFirstFrequency : frequency_;
    uint64_t clocks = 0;
    for (const tvb::FieldView &field : record.fields) {
      const uint64_t number = field.number ? static_cast<uint64_t>(field.number->value) : 0;
      if (field.tag == tvb::kTagTime) {
        clocks += TimeClocks(number - kOffset);
      } else if (field.tag == tvb::kTagCycles) {
        clocks += (number > kMarker ? number - kMarker : number) - kOffset;
      }
    }
    return static_cast<uint64_t>(std::max(static_cast<int32_t>(clocks), 0));
  }

  uint64_t TimeClocks(uint64_t time) const {
    return time > kMarker ? frequency_ * (time - kMarker) / 1000 : frequency_ * time / 1000000;
  }

  void Limit(uint64_t frequency) {
    if (frequency_ == 0 || frequency < frequency_) {
      frequency_ = frequency;
    }
  }

  void Repeat() {
    length_.clocks += (length_.clocks - loop_start_.clocks) * (passes_ - 1);
    length_.records += (length_.records - loop_start_.records) * (passes_ - 1);
    passes_ = 1;
  }

  PlayLength length_;
  PlayLength loop_start_;
  uint64_t passes_ = 1;
  tvb::PadBits pads_;
  uint64_t frequency_ = 0;
};

}  // namespace

PlayLength MeasurePlay(tvb::Bytes image, const tvb::HeaderView &header) {
  Counter counter;
  tvb::Reader reader(image, header);
  while (const std::optional<tvb::RecordView> record = reader.Next()) {
    counter.Add(*record);
  }
  return counter.length();
}

}  // namespace tool
