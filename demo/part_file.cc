// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "demo/part_file.h"

#include <cstdio>

#include "sim/sim.h"

namespace demo {
namespace {

// The low `count` bits of `value`, which has zeros above, least significant first.
Bits BitsOf(uint64_t value, uint32_t count) {
  Bits bits;
  for (uint32_t i = 0; i < count; ++i) {
    bits.push_back(i < 64 && ((value >> i) & 1) != 0);
  }
  return bits;
}

// The bits as bytes of a file: the first bit is the most significant bit of the first byte.
tvb::Buffer BytesOf(const Bits &bits) {
  tvb::Buffer bytes((bits.size() + 7) / 8);
  for (size_t i = 0; i < bits.size(); ++i) {
    if (bits[i]) {
      bytes[i / 8] |= 0x80 >> (i % 8);
    }
  }
  return bytes;
}

// Appends `count` copies of `bit` to `bits`.
void Put(Bits &bits, size_t count, bool bit) {
  bits.insert(bits.end(), count, bit);
}

}  // namespace

std::vector<Bits> RowsOfText(const Part &part, const char *text) {
  std::string bytes = text;
  bytes.resize(size_t{part.rows} * part.row_bits / 8);
  std::vector<Bits> rows(part.rows);
  for (size_t i = 0; i < size_t{part.rows} * part.row_bits; ++i) {
    rows[i / part.row_bits].push_back(((bytes[i / 8] >> (i % 8)) & 1) != 0);
  }
  return rows;
}

PartFile::PartFile(const tvb::ChainPlace &place, const Part &part, const tvb::FileHeader &header)
    : place_(place), part_(part), writer_(header) {
  writer_.Opening(place.before, place.after, SIM_IDCODE_6);
  writer_.FreshFrequency(1000000);
}

// The bits of the devices nearest to TDO go in, and come out, before the part's bits.
tvb::Buffer PartFile::Framed(const Bits &bits, bool padding) const {
  Bits all;
  Put(all, place_.after, padding);
  all.insert(all.end(), bits.begin(), bits.end());
  Put(all, place_.before, padding);
  return BytesOf(all);
}

uint32_t PartFile::FramedLength(const Bits &bits) const {
  return static_cast<uint32_t>(place_.after + bits.size() + place_.before);
}

void PartFile::Instruction(uint8_t instruction) {
  const tvb::Buffer instructions = tvb::ChainInstructions(place_, instruction);
  writer_.Sir(static_cast<uint32_t>(tvb::kInstructionBits * instructions.size()), instructions);
}

void PartFile::Data(const Bits &bits) {
  writer_.Sdr(FramedLength(bits), Framed(bits, false));
}

void PartFile::Data(const Bits &bits, const Bits &expected) {
  const Bits mask(expected.size(), true);
  writer_.Sdr(FramedLength(bits), Framed(bits, false), Framed(expected, false),
              Framed(mask, false));
}

void PartFile::CheckIdcode() {
  Instruction(SIM_IDCODE_6);
  Data(BitsOf(0, 32), BitsOf(part_.idcode, 32));
}

void PartFile::Erase() {
  Instruction(SIM_ENABLE);
  Instruction(SIM_ERASE);
  writer_.RunTest(part_.erase_clocks);
  Instruction(SIM_STATUS);
  Data(BitsOf(0, 8), BitsOf(SIM_STATUS_ENABLED | SIM_STATUS_DONE, 8));
}

void PartFile::Program(const std::vector<Bits> &rows) {
  Program(rows, part_.program_clocks);
}

void PartFile::Program(const std::vector<Bits> &rows, uint32_t clocks) {
  Instruction(SIM_ADDRESS);
  Data(BitsOf(0, 32));
  Instruction(SIM_PROGRAM);
  for (const Bits &row : rows) {
    Data(row);
    writer_.RunTest(clocks);
  }
}

void PartFile::Verify(const std::vector<Bits> &rows) {
  Instruction(SIM_ADDRESS);
  Data(BitsOf(0, 32));
  Instruction(SIM_READ);
  for (const Bits &row : rows) {
    Data(BitsOf(0, part_.row_bits), row);
  }
}

tvb::Buffer PartFile::Finish() {
  Instruction(SIM_DISABLE);
  return writer_.Finish();
}

tvb::Buffer PartFile::Whole(const std::vector<Bits> &rows) {
  CheckIdcode();
  Erase();
  Program(rows);
  Verify(rows);
  return Finish();
}

bool Save(const std::string &path, const tvb::Buffer &bytes) {
  std::FILE *file = std::fopen(path.c_str(), "wb");
  bool whole = file != nullptr;
  if (whole) {
    whole = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    whole = std::fclose(file) == 0 && whole;
  }
  if (!whole) {
    std::perror(path.c_str());
  }
  return whole;
}

}  // namespace demo
