// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Scans with their pads.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "svf_bench.h"
#include "tools/compile/joined_scan.h"

namespace {

using Bits = std::string;

Bits BitsOf(tvb::Bytes bytes, uint32_t count) {
  Bits bits;
  for (uint32_t bit = 0; bit < count; ++bit) {
    bits += static_cast<char>('0' + (bytes[bit / 8] >> (7 - bit % 8) & 1));
  }
  return bits;
}

// A register with random contents.
struct RandomRegister {
  RandomRegister(std::mt19937 &random, svf::Register which, uint32_t bits, bool compares) {
    const auto hex = [&] {
      std::string digits = "0";
      for (uint32_t digit = 0; digit < bits / 4; ++digit) {
        digits += "0123456789ABCDEF"[random() % 16];
      }
      return "(" + digits + ")";
    };
    const std::string text = std::string(Name(which)) + " " + std::to_string(bits) + " TDI" +
                             hex() + "SMASK" + hex() +
                             (compares ? "TDO" + hex() + "MASK" + hex() : "") + ";";
    const svf::Statement statement = test::ParseOne(text);
    held.Load(std::get<svf::ScanStatement>(statement.what));
  }
  svf::ScanRegister held;
};

TEST(SvfScan, IsHeaderDataAndTrailerInThisOrder) {
  std::mt19937 random(1);
  tool::ScanJoiner joiner;
  for (int round = 0; round < 2000; ++round) {
    const uint32_t sizes[] = {static_cast<uint32_t>(random() % 20),
                              static_cast<uint32_t>(random() % 40),
                              static_cast<uint32_t>(random() % 20)};
    const RandomRegister header(random, svf::Register::kHdr, sizes[0], false);
    const RandomRegister scan(random, svf::Register::kSdr, sizes[1], round % 2 == 0);
    const RandomRegister trailer(random, svf::Register::kTdr, sizes[2], false);
    const tvb::Shift joined = joiner.Join(header.held, scan.held, trailer.held);
    const uint32_t bits = sizes[0] + sizes[1] + sizes[2];
    ASSERT_EQ(joined.bits, bits);
    ASSERT_EQ(joined.tdi.size(), (bits + 7) / 8);
    ASSERT_EQ(BitsOf(joined.tdi, bits), BitsOf(header.held.tdi(), sizes[0]) +
                                            BitsOf(scan.held.tdi(), sizes[1]) +
                                            BitsOf(trailer.held.tdi(), sizes[2]));
    // Without any that is free, nothing is said.
    ASSERT_EQ(joined.care.empty() ? Bits(bits, '1') : BitsOf(joined.care, bits),
              BitsOf(header.held.smask(), sizes[0]) + BitsOf(scan.held.smask(), sizes[1]) +
                  BitsOf(trailer.held.smask(), sizes[2]));
    if (bits % 8 != 0) {
      ASSERT_EQ(joined.tdi[bits / 8] & (0xFF >> bits % 8), 0);
    }
    if (!joined.mask.empty()) {
      const Bits before(sizes[0], '0');
      const Bits after(sizes[2], '0');
      ASSERT_EQ(BitsOf(joined.tdo, bits), before + BitsOf(scan.held.tdo(), sizes[1]) + after);
      ASSERT_EQ(BitsOf(joined.mask, bits), before + BitsOf(scan.held.mask(), sizes[1]) + after);
    }
  }
}

}  // namespace
