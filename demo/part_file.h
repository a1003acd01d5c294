// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes command files for the programmable part of a simulated chain: the steps by which such a
// part is identified, erased, programmed and verified, as records of a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tvb/player.h"
#include "tvb/writer.h"

namespace demo {

// Bits in the order in which they are shifted, the first one first.
using Bits = std::vector<bool>;

// What the file has to know of a part, as in the chain's text (sim/config.h).
struct Part {
  uint32_t idcode = 0;
  uint32_t rows = 0;
  uint32_t row_bits = 0;
  uint32_t erase_clocks = 0;
  uint32_t program_clocks = 0;
};

// Rows of `part` filled with `text`, padded with zero bytes: character i of the text is bytes i of
// the rows put end to end, each byte's least significant bit shifted first.
std::vector<Bits> RowsOfText(const Part &part, const char *text);

// One file in the making; each step puts its records at the end. All other devices of the chain are
// in BYPASS throughout.
class PartFile {
 public:
  // Begins the file with the record that tells the player where the part sits, and sets TCK to
  // 1 MHz.
  PartFile(const tvb::ChainPlace &place, const Part &part, const tvb::FileHeader &header = {});

  // Compares the IDCODE.
  void CheckIdcode();

  // Enters programming mode, erases the memory and compares the status.
  void Erase();

  // Programs the rows from row 0 on, waiting `clocks` of Run-Test/Idle after each (as many as the
  // part asks for, if it is not given).
  void Program(const std::vector<Bits> &rows);
  void Program(const std::vector<Bits> &rows, uint32_t clocks);

  // Reads the rows from row 0 on and compares every bit.
  void Verify(const std::vector<Bits> &rows);

  // Leaves programming mode and closes the file.
  tvb::Buffer Finish();

  // All of these steps, one after another.
  tvb::Buffer Whole(const std::vector<Bits> &rows);

  // The writer, for records of one's own.
  tvb::Writer &writer() {
    return writer_;
  }

  // Loads `instruction` into the part; and shifts `bits` through the part's data register, where
  // `expected` compares what comes out of it with as many bits.
  void Instruction(uint8_t instruction);
  void Data(const Bits &bits);
  void Data(const Bits &bits, const Bits &expected);

 private:
  tvb::Buffer Framed(const Bits &bits, bool padding) const;
  uint32_t FramedLength(const Bits &bits) const;

  tvb::ChainPlace place_;
  Part part_;
  tvb::Writer writer_;
};

// Writes `bytes` to a file. Returns false where it cannot, having said why on standard error.
bool Save(const std::string &path, const tvb::Buffer &bytes);

}  // namespace demo
