// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A command file in the making beside the scans that it must cause. Bits here are strings of '0'
// and '1', the bit that is shifted first as the first character.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "sim/sim.h"
#include "tvb/writer.h"

namespace script {

using Bits = std::string;
using Lines = std::vector<std::string>;

// Where the target sits: its position counted from 1 at the TDI end, and the number of devices.
struct Place {
  uint32_t level = 1;
  uint32_t total = 1;
};

// The programmable part that is the target.
struct Part {
  uint32_t idcode = 0x0A014C35;
  uint32_t rows = 4;
  uint32_t row_bits = 24;
  uint32_t erase_clocks = 100;
  uint32_t program_clocks = 20;
};

// The chain's text: the part at its place, all other devices with BYPASS alone.
inline std::string ChainText(const Place &place, const Part &part) {
  std::string text;
  for (uint32_t device = 1; device <= place.total; ++device) {
    text += device == 1 ? "" : ";";
    text += device != place.level
                ? "bypass"
                : "idcode=" + std::to_string(part.idcode) + ",part=" + std::to_string(part.rows) +
                      "x" + std::to_string(part.row_bits) +
                      ",erase=" + std::to_string(part.erase_clocks) +
                      ",program=" + std::to_string(part.program_clocks);
  }
  return text;
}

// The low `count` bits of a value, least significant bit first.
inline Bits BitsOf(uint64_t value, size_t count) {
  Bits bits;
  for (size_t i = 0; i < count; ++i) {
    bits += value >> i & 1 ? '1' : '0';
  }
  return bits;
}

// Bits as a file has them: the first one is the most significant of the first byte.
inline tvb::Buffer BytesOf(const Bits &bits) {
  tvb::Buffer bytes((bits.size() + 7) / 8);
  for (size_t i = 0; i < bits.size(); ++i) {
    if (bits[i] == '1') {
      bytes[i / 8] = static_cast<uint8_t>(bytes[i / 8] | 0x80 >> (i % 8));
    }
  }
  return bytes;
}

// Rows that differ from each other, for a part.
inline Lines RowsOf(const Part &part, uint32_t seed = 1) {
  Lines rows;
  for (uint32_t row = 0; row < part.rows; ++row) {
    Bits bits;
    for (uint32_t i = 0; i < part.row_bits; ++i) {
      seed = seed * 1664525 + 1013904223;
      bits += seed >> 24 & 1 ? '1' : '0';
    }
    rows.push_back(bits);
  }
  return rows;
}

class Script {
 public:
  // Begins with the record that says where the target sits, and with pads and frequency unset,
  // whatever an earlier file left.
  explicit Script(const Place &place, const tvb::FileHeader &header = {},
                  const tvb::BlockChoice &choice = {})
      : place_(place), writer_(header) {
    if (header.compression != tvb::kPlainBlocks) {
      writer_.Encode(choice);
    }
    Expect("IR ", Chained(SIM_IDCODE_6));
    Expect("DR ", Bits(32 + after(), '1'));
    writer_.Opening(before(), after());
    Expect("IR ", Chained(SIM_IDCODE_6));
    writer_.FreshFrequency(1000000);
    Pads(Place{1, 1});
  }

  // The encodings of the shifts from here on, one after the other and again from the first.
  void EncodeInTurn(std::vector<tvb::BlockChoice> choices) {
    choices_ = std::move(choices);
  }

  // Header and trailer of the data shifts, for a place in the chain.
  void Pads(const Place &place) {
    hdr_ = place.total - place.level;
    tdr_ = place.level - 1;
    Record([&] {
      writer_.Hdr(hdr_, BytesOf(Bits(hdr_, '1')));
      writer_.Tdr(tdr_, BytesOf(Bits(tdr_, '0')));
      writer_.Hir(0, {});
      writer_.Tir(0, {});
    });
  }

  // An SIR of the whole chain: the instruction for the target, BYPASS for the others.
  void Instruction(uint8_t instruction) {
    const Bits bits = Chained(instruction);
    Shift([&] { writer_.Sir(Count(bits), BytesOf(bits)); });
    Expect("IR ", bits);
  }

  // An SIR of the target's register alone, through HIR and TIR. TDI is not driven in pads, so the
  // others receive what it was left at.
  void InstructionThroughPads(uint8_t instruction) {
    const Bits bits = BitsOf(instruction, 8);
    Record([&] {
      writer_.Hir(8 * after(), tvb::Buffer(after(), 0xFF));
      writer_.Tir(8 * before(), tvb::Buffer(before(), 0xFF));
      writer_.Sir(8, BytesOf(bits));
      writer_.Hir(0, {});
      writer_.Tir(0, {});
    });
    Expect("IR ", Padded(8 * after(), bits, 8 * before()));
  }

  // An SDR of the target through HDR and TDR.
  void Data(const Bits &bits) {
    Shift([&] { writer_.Sdr(Count(bits), BytesOf(bits)); });
    Expect("DR ", Padded(hdr_, bits, tdr_));
  }

  // The same with every bit of TDO compared.
  void Verify(const Bits &bits, const Bits &tdo) {
    Shift([&] {
      writer_.Sdr(Count(bits), BytesOf(bits), BytesOf(tdo), BytesOf(Bits(bits.size(), '1')));
    });
    Expect("DR ", Padded(hdr_, bits, tdr_));
  }

  void Idle(uint32_t clocks) {
    Record([&] { writer_.RunTest(clocks); });
    ExpectIdle(clocks);
  }

  // Plays the body `count` times from one copy in the file.
  void Loop(uint32_t count, const std::function<void()> &body) {
    Record([&] { writer_.BeginLoop(count); });
    body();
    Record([&] { writer_.EndLoop(); });
    repeating_ = true;
    for (uint32_t i = 1; i < count; ++i) {
      body();
    }
    repeating_ = false;
  }

  // Puts records that cause no scan.
  void Record(const std::function<void()> &write) {
    if (!repeating_) {
      write();
    }
  }

  // Says what scans put by Record() itself must look like.
  void Expect(const std::string &kind, const Bits &tdi) {
    Flush();
    pending_ = kind + tdi;
    level_ = tdi.back();
  }
  void ExpectIdle(uint32_t clocks) {
    idle_ += clocks;
    level_ = '0';
  }

  tvb::Writer &writer() {
    return writer_;
  }

  // Ends the file with a harmless record.
  tvb::Buffer Finish() {
    Flush();
    return writer_.Finish();
  }

  // All scans of a download, the IDCODE read first.
  const Lines &scans() const {
    return scans_;
  }
  // The scans of the records alone.
  static constexpr size_t kPrescan = 2;
  size_t record_scans() const {
    return scans_.size() - kPrescan;
  }

 private:
  uint32_t before() const {
    return place_.level - 1;
  }
  uint32_t after() const {
    return place_.total - place_.level;
  }
  static uint32_t Count(const Bits &bits) {
    return static_cast<uint32_t>(bits.size());
  }
  Bits Chained(uint8_t instruction) const {
    return Bits(8 * after(), '1') + BitsOf(instruction, 8) + Bits(8 * before(), '1');
  }
  Bits Padded(uint32_t header, const Bits &bits, uint32_t trailer) const {
    return Bits(header, level_) + bits + Bits(trailer, bits.back());
  }

  void Shift(const std::function<void()> &write) {
    if (!choices_.empty() && !repeating_) {
      writer_.Encode(choices_[turn_++ % choices_.size()]);
    }
    Record(write);
  }
  void Flush() {
    if (!pending_.empty()) {
      scans_.push_back(pending_ + (idle_ != 0 ? " idle " + std::to_string(idle_) : ""));
    }
    pending_.clear();
    idle_ = 0;
  }

  Place place_;
  tvb::Writer writer_;
  std::vector<tvb::BlockChoice> choices_;
  size_t turn_ = 0;
  Lines scans_;
  std::string pending_;
  uint64_t idle_ = 0;
  char level_ = '0';  // of TDI
  uint32_t hdr_ = 0, tdr_ = 0;
  bool repeating_ = false;
};

// Identifies, erases, programs and verifies a part, every bit compared.
inline void ProgramPart(Script &script, const Place &place, const Part &part, const Lines &rows) {
  script.Pads(place);
  script.Instruction(SIM_IDCODE_6);
  script.Verify(Bits(32, '1'), BitsOf(part.idcode, 32));
  script.Instruction(SIM_ENABLE);
  script.Instruction(SIM_ERASE);
  script.Idle(part.erase_clocks);
  script.Instruction(SIM_STATUS);
  script.Verify(Bits(8, '0'), BitsOf(SIM_STATUS_ENABLED | SIM_STATUS_DONE, 8));
  script.Instruction(SIM_ADDRESS);
  script.Data(Bits(32, '0'));
  script.Instruction(SIM_PROGRAM);
  for (const Bits &row : rows) {
    script.Data(row);
    script.Idle(part.program_clocks);
  }
  script.Instruction(SIM_ADDRESS);
  script.Data(Bits(32, '0'));
  script.Instruction(SIM_READ);
  for (const Bits &row : rows) {
    script.Verify(Bits(part.row_bits, '0'), row);
  }
  script.Instruction(SIM_DISABLE);
}

}  // namespace script
