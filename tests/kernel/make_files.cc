// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// make_files FOLDER: writes the command files that the kernel tests download. They are for the
// chains of guest/lib.sh: a part of 8 rows of 32 bits, alone or as the second of three devices.
#include <cstdio>
#include <exception>
#include <string>

#include "demo/part_file.h"
#include "sim/sim.h"
#include "tvb/seal.h"

namespace {

using demo::Bits;
using demo::PartFile;

constexpr demo::Part kPart = {0x0A014C35, 8, 32, 100, 20};
constexpr tvb::ChainPlace kAlone = {0, 0};
constexpr tvb::ChainPlace kSecondOfThree = {1, 1};
// The memory's 32 bytes, in order.
constexpr char kText[] = "0123456789abcdefGHIJKLMNOPQRSTUV";

const std::vector<Bits> &Rows() {
  static const std::vector<Bits> rows = demo::RowsOfText(kPart, kText);
  return rows;
}

tvb::Buffer Alone() {
  return PartFile(kAlone, kPart).Whole(Rows());
}

tvb::Buffer Sealed() {
  tvb::Buffer file = Alone();
  tvb::Seal(file);
  return file;
}

tvb::Buffer SecondOfThree() {
  return PartFile(kSecondOfThree, kPart).Whole(Rows());
}

template <tvb::Encoding encoding>
tvb::Buffer Encoded() {
  PartFile file(kAlone, kPart);
  file.writer().Encode(tvb::BlockChoice::As(encoding));
  return file.Whole(Rows());
}

tvb::Buffer Plain() {
  return PartFile(kAlone, kPart, tvb::FileHeader::Plain()).Whole(Rows());
}

// Compares the IDCODE of the second of three devices and nothing more.
tvb::Buffer Idcode() {
  PartFile file(kSecondOfThree, kPart);
  file.CheckIdcode();
  return file.writer().Finish();
}

// The same where the IDCODE is expected to be another one.
tvb::Buffer WrongIdcode() {
  demo::Part other = kPart;
  other.idcode ^= 1;
  PartFile file(kSecondOfThree, other);
  file.CheckIdcode();
  return file.writer().Finish();
}

// Waits one clock less than the part needs after each row.
tvb::Buffer ShortWait() {
  PartFile file(kAlone, kPart);
  file.Erase();
  file.Program(Rows(), kPart.program_clocks - 1);
  file.Verify(Rows());
  return file.Finish();
}

// Programs and verifies all rows in loops of one row.
tvb::Buffer Loop() {
  const Bits row = demo::RowsOfText(kPart, "loop")[0];
  PartFile file(kAlone, kPart);
  file.Erase();
  file.Program({});
  file.writer().BeginLoop(kPart.rows);
  file.Data(row);
  file.writer().RunTest(kPart.program_clocks);
  file.writer().EndLoop();
  file.Verify({});
  file.writer().BeginLoop(kPart.rows);
  file.Data(Bits(kPart.row_bits, false), row);
  file.writer().EndLoop();
  return file.Finish();
}

// The second of three devices, the others being covered by header and trailer registers.
tvb::Buffer Padded() {
  PartFile file(kAlone, kPart);
  file.writer().Hir(8, tvb::Buffer{0xFF});
  file.writer().Tir(8, tvb::Buffer{0xFF});
  file.writer().Hdr(1, tvb::Buffer{0x80});
  file.writer().Tdr(1, tvb::Buffer{0x80});
  file.CheckIdcode();
  file.Erase();
  file.Program(Rows());
  file.Verify(Rows());
  file.Instruction(SIM_DISABLE);
  file.writer().ClearPads();
  return file.writer().Finish();
}

// Takes two seconds, in steps of a tenth, with few clocks.
tvb::Buffer Slow() {
  PartFile file(kAlone, kPart);
  file.writer().Frequency(1000);
  file.writer().BeginLoop(20);
  file.writer().RunTest(std::chrono::milliseconds(100));
  file.writer().EndLoop();
  return file.Finish();
}

// Waits in one piece for longer than a processor should be held, and then programs.
tvb::Buffer LongWait() {
  PartFile file(kAlone, kPart);
  file.writer().Frequency(1000);
  file.writer().RunTest(std::chrono::milliseconds(1500));
  file.Erase();
  file.Program(Rows());
  file.Verify(Rows());
  return file.Finish();
}

// Compares the IDCODE for a minute or more.
tvb::Buffer LongCompared() {
  PartFile file(kAlone, kPart);
  file.writer().BeginLoop(1000000);
  file.CheckIdcode();
  file.writer().EndLoop();
  return file.Finish();
}

// Two million clocks of scans of which nothing is compared.
tvb::Buffer LongUncompared() {
  PartFile file(kAlone, kPart);
  const tvb::Buffer zeros(12500, 0);
  file.writer().BeginLoop(20);
  file.writer().Sdr(100000, zeros);
  file.writer().EndLoop();
  return file.Finish();
}

tvb::Buffer BadHeader() {
  tvb::Buffer file = Alone();
  file[0] = 'x';
  return file;
}

tvb::Buffer UnknownOpcode() {
  PartFile file(kAlone, kPart);
  file.writer().Record(2, {});
  return file.Finish();
}

// An instruction record of 8 bits in which a tag stands that there is none of.
tvb::Buffer UnknownTag() {
  PartFile file(kAlone, kPart);
  file.writer().Record(tvb::kSir, tvb::Buffer{8, 99});
  return file.Finish();
}

tvb::Buffer Empty() {
  return {};
}

struct File {
  const char *name;
  tvb::Buffer (*make)();
};

constexpr File kFiles[] = {
    {"alone.tvb", Alone},
    {"sealed.tvb", Sealed},
    {"three.tvb", SecondOfThree},
    {"raw.tvb", Encoded<tvb::Encoding::kRaw>},
    {"run-length.tvb", Encoded<tvb::Encoding::kRunLength>},
    {"nibble.tvb", Encoded<tvb::Encoding::kNibble>},
    {"bit-coding.tvb", Encoded<tvb::Encoding::kBitCoding>},
    {"lzw.tvb", Encoded<tvb::Encoding::kLzw>},
    {"plain.tvb", Plain},
    {"idcode.tvb", Idcode},
    {"wrong-idcode.tvb", WrongIdcode},
    {"short-wait.tvb", ShortWait},
    {"loop.tvb", Loop},
    {"padded.tvb", Padded},
    {"slow.tvb", Slow},
    {"long-wait.tvb", LongWait},
    {"long-compared.tvb", LongCompared},
    {"long-uncompared.tvb", LongUncompared},
    {"bad-header.tvb", BadHeader},
    {"unknown-opcode.tvb", UnknownOpcode},
    {"unknown-tag.tvb", UnknownTag},
    {"empty.tvb", Empty},
};

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_files FOLDER\n");
    return 2;
  }
  try {
    for (const File &file : kFiles) {
      const std::string path = std::string(argv[1]) + "/" + file.name;
      if (!demo::Save(path, file.make())) {
        return 1;
      }
    }
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_files: %s\n", error.what());
    return 1;
  }
  return 0;
}
