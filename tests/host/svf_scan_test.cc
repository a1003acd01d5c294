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

// One scan and those that resume it.
struct Pieces {
  void Add(const svf::ScanRegister &part) {
    const uint32_t bits = part.bits();
    tdi += BitsOf(part.tdi(), bits);
    smask += BitsOf(part.smask(), bits);
    tdo += part.compares() ? BitsOf(part.tdo(), bits) : Bits(bits, '0');
    mask += part.compares() ? BitsOf(part.mask(), bits) : Bits(bits, '0');
  }
  Bits tdi, smask, tdo, mask;
};

TEST(SvfScan, IsHeaderDataAndTrailerOfEachPieceInThisOrder) {
  std::mt19937 random(1);
  tool::ScanJoiner joiner;
  for (int round = 0; round < 2000; ++round) {
    joiner.Clear();
    Pieces expected;
    const auto part = [&](svf::Register which, uint32_t bits) {
      return RandomRegister(random, which, random() % 3 == 0 ? 0 : random() % bits,
                            random() % 2 == 0);
    };
    for (unsigned pieces = 1 + random() % 4; pieces > 0; --pieces) {
      const RandomRegister header = part(svf::Register::kHdr, 20);
      const RandomRegister scan = part(svf::Register::kSdr, 40);
      const RandomRegister trailer = part(svf::Register::kTdr, 20);
      for (const RandomRegister *each : {&header, &scan, &trailer}) {
        expected.Add(each->held);
      }
      joiner.Add(header.held, scan.held, trailer.held);
      joiner.Keep();
    }
    const tvb::Shift joined = joiner.Scan();
    const uint32_t bits = static_cast<uint32_t>(expected.tdi.size());
    ASSERT_EQ(joined.bits, bits);
    ASSERT_EQ(joined.tdi.size(), (bits + 7) / 8);
    ASSERT_EQ(BitsOf(joined.tdi, bits), expected.tdi);
    // Without any that is free, nothing is said.
    ASSERT_EQ(joined.care.empty() ? Bits(bits, '1') : BitsOf(joined.care, bits), expected.smask);
    if (bits % 8 != 0) {
      ASSERT_EQ(joined.tdi[bits / 8] & (0xFF >> bits % 8), 0);
    }
    ASSERT_EQ(joined.mask.empty() ? Bits(bits, '0') : BitsOf(joined.mask, bits), expected.mask);
    ASSERT_EQ(joined.tdo.empty() ? Bits(bits, '0') : BitsOf(joined.tdo, bits), expected.tdo);
  }
}

// A scan that nothing is joined to is not copied.
TEST(SvfScan, OfOnePieceIsTheRegisters) {
  std::mt19937 random(2);
  const RandomRegister none(random, svf::Register::kHdr, 0, false);
  const RandomRegister scan(random, svf::Register::kSdr, 40, true);
  tool::ScanJoiner joiner;
  joiner.Add(none.held, scan.held, none.held);
  EXPECT_EQ(joiner.Scan().tdi.data(), scan.held.tdi().data());
  EXPECT_EQ(joiner.Scan().mask.data(), scan.held.mask().data());
  joiner.Keep();
  EXPECT_NE(joiner.Scan().tdi.data(), scan.held.tdi().data());
  EXPECT_EQ(BitsOf(joiner.Scan().tdi, 40), BitsOf(scan.held.tdi(), 40));
}

}  // namespace
