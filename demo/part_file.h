// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes command files for the programmable part of a simulated chain: the steps that identify,
// erase, program and verify such a part, as records of a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tvb/player.h"
#include "tvb/writer.h"

namespace demo {

// Bits in shift order, first bit first.
using Bits = std::vector<bool>;

// The properties of a part that the file depends on, as in the chain's text (sim/config.h).
struct Part {
  uint32_t idcode = 0;
  uint32_t rows = 0;
  uint32_t row_bits = 0;
  uint32_t erase_clocks = 0;
  uint32_t program_clocks = 0;
};

// Rows of `part` filled with `text`, padded with zero bytes: character i of the text is byte i of
// the concatenated rows, each byte shifted least significant bit first.
std::vector<Bits> RowsOfText(const Part &part, const char *text);

// A file being written; each step appends its records. All other devices of the chain stay in
// BYPASS.
class PartFile {
 public:
  // Begins the file with the record that gives the player the part's place in the chain, and sets
  // TCK to 1 MHz.
  PartFile(const tvb::ChainPlace &place, const Part &part, const tvb::FileHeader &header = {});

  // Compares the IDCODE.
  void CheckIdcode();

  // Enters programming mode, erases the memory and compares the status.
  void Erase();

  // Programs the rows from row 0 up, waiting `clocks` clocks in Run-Test/Idle after each (by
  // default as many as the part requires).
  void Program(const std::vector<Bits> &rows);
  void Program(const std::vector<Bits> &rows, uint32_t clocks);

  // Reads the rows from row 0 up and compares every bit.
  void Verify(const std::vector<Bits> &rows);

  // Leaves programming mode and closes the file.
  tvb::Buffer Finish();

  // All of these steps, in order.
  tvb::Buffer Whole(const std::vector<Bits> &rows);

  // The writer, for additional records.
  tvb::Writer &writer() {
    return writer_;
  }

  // Instruction() loads `instruction` into the part. Data() shifts `bits` through the part's data
  // register; with `expected`, which has the same number of bits, it compares what comes out.
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

// Writes `bytes` to a file. Returns false on failure, after reporting the reason on standard error.
bool Save(const std::string &path, const tvb::Buffer &bytes);

}  // namespace demo
