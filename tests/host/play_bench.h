// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A command file on the lines of a rehearsal, clocked by a player of the tests' own: what stands
// between the lines and the user is tested without the driver.
#pragma once

#include <cstdint>
#include <string>

#include "tools/rehearse/lines.h"
#include "tools/rehearse/mismatch.h"
#include "tools/rehearse/playhead.h"
#include "tools/rehearse/target.h"
#include "tvb/play_order.h"
#include "tvb/reader.h"
#include "tvb/writer.h"

namespace test {

// `bits` bits of a number in the bytes of a command file, bit 0 being shifted first.
inline tvb::Buffer FileBytes(uint64_t number, unsigned bits) {
  tvb::Buffer bytes((bits + 7) / 8);
  for (unsigned bit = 0; bit < bits; ++bit) {
    if (number >> bit & 1) {
      bytes[bit / 8] = static_cast<uint8_t>(bytes[bit / 8] | 0x80 >> bit % 8);
    }
  }
  return bytes;
}

class PlayBench {
 public:
  static constexpr uint64_t kCallTime = 100;

  explicit PlayBench(tvb::Buffer image)
      : image_(std::move(image)),
        header_(tvb::ReadHeader(image_)),
        playhead(image_, header_, {[this] { return position_; }, [this] { return in_records_; }}),
        lines(clock, kCallTime, &playhead) {}

  // Test-Logic-Reset, Run-Test/Idle, and a scan of 8 and one of 32 bits that are none of the
  // file's.
  void Begin() {
    Clocks("111110", "000000");
    Clocks("110000000000110", "000001100000000");
    Clocks("100" + std::string(31, '0') + "110", std::string(37, '0'));
    in_records_ = true;
  }

  // Plays the file's records; false: a comparison failed, and TCK is low at the bit that did.
  bool Play() {
    tvb::PlayOrder order(image_, header_);
    while (const auto played = order.Next()) {
      position_ = played->record.end;
      if (played->record.IsShift() && !Shift(played->record, order.pads())) {
        return false;
      }
    }
    return true;
  }

  // The comparison that failed on the target that the lines have.
  std::optional<tool::Mismatch> Mismatch(tool::Target &target) {
    const auto stopped = tool::FinishScan(lines, playhead, target);
    return stopped ? std::optional(tool::MakeMismatch(*stopped, lines, playhead)) : std::nullopt;
  }

 private:
  tvb::Buffer image_;
  tvb::HeaderView header_;
  uint64_t position_ = 0;
  bool in_records_ = false;

 public:
  tool::BoardClock clock;
  tool::Playhead playhead;
  tool::Lines lines;

 private:
  static bool Bit(const tvb::Buffer &bytes, size_t bit) {
    return !bytes.empty() && (bytes[bit / 8] >> (7 - bit % 8) & 1);
  }

  void Low(bool tms, bool tdi) {
    lines.Write(tool::Line::kTck, false);
    lines.Write(tool::Line::kTms, tms);
    lines.Write(tool::Line::kTdi, tdi);
  }

  void Clocks(const std::string &tms, const std::string &tdi) {
    for (size_t i = 0; i < tms.size(); ++i) {
      Low(tms[i] == '1', tdi[i] == '1');
      lines.Write(tool::Line::kTck, true);
    }
  }

  bool Shift(const tvb::RecordView &record, const tvb::PadBits &pads) {
    const tvb::Buffer tdi = tvb::FieldData(image_, record, tvb::kTagTdi);
    const tvb::Buffer tdo = tvb::FieldData(image_, record, tvb::kTagTdo);
    const tvb::Buffer mask = tvb::FieldData(image_, record, tvb::kTagMask);
    const std::string walk = record.opcode == tvb::kSir ? "1100" : "100";
    Clocks(walk, walk);
    const uint32_t header = pads.header(record.opcode);
    const uint32_t whole = header + record.bits() + pads.trailer(record.opcode);
    for (uint32_t i = 0; i < whole; ++i) {
      const uint32_t own = i - header;
      const bool is_own = i >= header && own < record.bits();
      Low(i + 1 == whole, is_own && Bit(tdi, own));
      if (is_own && Bit(mask, own) && lines.Read() != Bit(tdo, own)) {
        return false;
      }
      lines.Write(tool::Line::kTck, true);
    }
    Clocks("10", "00");
    return true;
  }
};

}  // namespace test
