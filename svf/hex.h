// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The hexadecimal data of a scan: what stands between two parentheses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace svf {

// Data as it stands in the text, not converted yet. Digits, blanks, line ends and comments only.
struct HexText {
  std::string_view text;  // between the parentheses
  size_t offset = 0;      // of that in the whole text
  size_t digits = 0;
  bool comments = false;
};

// Reads data from offset `start` of `text`, just behind the opening parenthesis, to the closing
// one, whose offset is the end of the result. Throws Error at a character that is no digit, and at
// the opening parenthesis if nothing closes it.
HexText ScanHex(std::string_view text, size_t start);

// Converts data into a register of `bits` bits: (bits + 7) / 8 bytes in the place of what was in
// `bytes`. The rightmost digit's least significant bit is register bit 0, which is shifted first;
// register bit d is bit 7 - (d mod 8) of byte d / 8. So the order of the digits and of the bits in
// them are both turned round. Bits that the digits do not reach, and the unused ones of the last
// byte, are 0. `what` names the data in messages ("TDI"). Throws Error if there is no digit but are
// bits, and at a digit with a 1 beyond the register.
void ConvertHex(const HexText &hex, uint32_t bits, const char *what, std::vector<uint8_t> &bytes);

}  // namespace svf
