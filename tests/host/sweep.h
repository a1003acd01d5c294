// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the sweeps download: one file that has every kind of record and block.
#pragma once

#include <memory>
#include <vector>

#include "bench.h"
#include "script.h"

namespace sweep {

using bench::Bench;
using bench::Bytes;
using bench::Lines;
using script::Part;
using script::Place;
using script::Script;

// The indices where records begin, by the lengths that they carry; the file's end is the last.
inline std::vector<size_t> Boundaries(const Bytes &file, size_t first) {
  std::vector<size_t> boundaries = {first};
  size_t at = first;
  while (at < file.size()) {
    uint64_t bits = 0;
    unsigned shift = 0;
    do {
      ++at;
      bits |= static_cast<uint64_t>(file.at(at) & 0x7F) << shift;
      shift += 7;
    } while (file[at] & 0x80);
    at += 1 + bits / 8;
    boundaries.push_back(at);
  }
  return boundaries;
}

// One good download: the file, and what it must do.
class Subject {
 public:
  // Plain: blocks are raw and without mode bytes. Else the blocks are of every encoding in turn.
  explicit Subject(bool plain) : script_(Begin(plain)), file_(Write(plain)) {}

  const Bytes &file() const {
    return file_;
  }
  const Lines &scans() const {
    return script_.scans();
  }
  // The scans without the IDCODE read.
  Lines RecordScans() const {
    return bench::Tail(script_.scans(), script_.record_scans());
  }
  // The chain; there is none before it is first asked for.
  Bench &bench() {
    if (bench_ == nullptr) {
      bench_ = std::make_unique<Bench>(script::ChainText(place_, part_));
    }
    return *bench_;
  }
  bool Programmed() {
    return bench().Memory(place_.level) == rows_;
  }
  // A new, unprogrammed chain.
  void Renew() {
    bench_.reset();
  }

 private:
  static Lines Rows() {
    // One repeated nibble, one repeated byte, one with a long run, one of its own.
    return {"101010101010101010101010", "110010101100101011001010", "000000001111111111111111",
            "011000110111100101000011"};
  }
  static Script Begin(bool plain) {
    return Script({2, 3}, plain ? tvb::FileHeader::Plain() : tvb::FileHeader());
  }
  Bytes Write(bool plain) {
    using tvb::BlockChoice;
    if (!plain) {
      script_.EncodeInTurn(
          {BlockChoice::As(tvb::Encoding::kNibble), BlockChoice::As(tvb::Encoding::kLzw),
           BlockChoice::As(tvb::Encoding::kRunLength), BlockChoice::As(tvb::Encoding::kBitCoding),
           BlockChoice::As(tvb::Encoding::kRaw), BlockChoice::With(tvb::Encoding::kLzw, 3)});
    }
    script::ProgramPart(script_, place_, part_, rows_);
    script_.InstructionThroughPads(SIM_IDCODE_6);
    script_.Verify(script::Bits(32, '1'), script::BitsOf(part_.idcode, 32));
    script_.Record([&] { script_.writer().Reserved(5, tvb::Buffer{'^', 8, 13}); });
    script_.Record([&] { script_.writer().RunTest(3, std::chrono::microseconds(40002)); });
    script_.ExpectIdle(40005);
    script_.Instruction(SIM_STATUS);
    script_.Loop(3, [&] {
      script_.Data("10");
      script_.Idle(2);
    });
    script_.Record([&] { script_.writer().Frequency(500000); });
    script_.Pads({1, 1});
    return script_.Finish();
  }

  const Place place_ = {2, 3};
  const Part part_;
  const Lines rows_ = Rows();
  Script script_;
  Bytes file_;
  std::unique_ptr<Bench> bench_;
};

// What a scan's text says of its bits, and of the clocks after it.
inline std::string Bits(const std::string &scan) {
  return scan.substr(0, scan.find(" idle"));
}
inline uint64_t Clocks(const std::string &scan) {
  const size_t idle = scan.find(" idle");
  return idle == std::string::npos ? 0 : std::stoull(scan.substr(idle + 6));
}

// Whether the scans begin as `expected` does; the clocks after the last one may be fewer.
inline bool IsBeginning(const Lines &scans, const Lines &expected) {
  if (scans.empty()) {
    return true;
  }
  const size_t last = scans.size() - 1;
  return scans.size() <= expected.size() &&
         std::equal(scans.begin(), scans.end() - 1, expected.begin()) &&
         Bits(scans[last]) == Bits(expected[last]) && Clocks(scans[last]) <= Clocks(expected[last]);
}

}  // namespace sweep
