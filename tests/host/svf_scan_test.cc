// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Scans with their pads, and the bits of them that may be anything.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "svf_bench.h"
#include "tools/compile/block_encoder.h"
#include "tools/compile/free_bits.h"
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
    const tool::ScanData data = joiner.Join(header.held, scan.held, trailer.held);
    const uint32_t bits = sizes[0] + sizes[1] + sizes[2];
    ASSERT_EQ(data.bits, bits);
    ASSERT_EQ(data.tdi.size(), (bits + 7) / 8);
    ASSERT_EQ(BitsOf(data.tdi, bits), BitsOf(header.held.tdi(), sizes[0]) +
                                          BitsOf(scan.held.tdi(), sizes[1]) +
                                          BitsOf(trailer.held.tdi(), sizes[2]));
    ASSERT_EQ(BitsOf(data.smask, bits), BitsOf(header.held.smask(), sizes[0]) +
                                            BitsOf(scan.held.smask(), sizes[1]) +
                                            BitsOf(trailer.held.smask(), sizes[2]));
    if (bits % 8 != 0) {
      ASSERT_EQ(data.tdi[bits / 8] & (0xFF >> bits % 8), 0);
    }
    if (data.compares) {
      const Bits before(sizes[0], '0');
      const Bits after(sizes[2], '0');
      ASSERT_EQ(BitsOf(data.tdo, bits), before + BitsOf(scan.held.tdo(), sizes[1]) + after);
      ASSERT_EQ(BitsOf(data.mask, bits), before + BitsOf(scan.held.mask(), sizes[1]) + after);
    }
  }
}

TEST(SvfScan, FreeBitsNeverTouchTheOthers) {
  std::mt19937 random(2);
  for (int round = 0; round < 200; ++round) {
    tvb::Buffer data(1 + random() % 50);
    tvb::Buffer care(data.size());
    for (size_t i = 0; i < data.size(); ++i) {
      data[i] = static_cast<uint8_t>(random());
      care[i] = static_cast<uint8_t>(random() | (random() % 2 == 0 ? 0xFF : 0));
    }
    const auto versions = tool::FreeBitVersions(data, care);
    ASSERT_EQ(versions.front(), data);
    for (const tvb::Buffer &version : versions) {
      ASSERT_EQ(version.size(), data.size());
      for (size_t i = 0; i < data.size(); ++i) {
        ASSERT_EQ((version[i] ^ data[i]) & care[i], 0);
      }
    }
  }
}

// Choosing again for what was chosen must choose the same: otherwise a file that is written back as
// SVF and compiled again would change.
TEST(SvfScan, AChoiceOfFreeBitsStays) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    const uint32_t bits = 17 + random() % 600;
    tvb::Buffer data((bits + 7) / 8);
    tvb::Buffer care(data.size());
    for (size_t i = 0; i < data.size(); ++i) {
      data[i] = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0x55);
      care[i] = static_cast<uint8_t>(random() % 4 == 0 ? random() : 0xFF);
    }
    const auto unused = static_cast<uint8_t>(0xFF00 >> (bits % 8 == 0 ? 8 : bits % 8));
    data.back() &= unused;
    care.back() &= unused;
    tool::BlockEncoder encoder(false, {});
    tvb::Buffer first;
    encoder.AppendFree(first, bits, data, care);

    tvb::Cursor cursor(first, 0);
    const tvb::BlockView view = tvb::MeasureBlock(cursor, data.size(), false);
    ASSERT_TRUE(view.Exact());
    const tvb::Buffer chosen = tvb::DecodeBlock(first, view);
    for (size_t i = 0; i < data.size(); ++i) {
      ASSERT_EQ((chosen[i] ^ data[i]) & care[i], 0);
    }
    ASSERT_EQ(chosen.back() & ~unused, 0);
    tvb::Buffer again;
    encoder.AppendFree(again, bits, chosen, care);
    ASSERT_EQ(again, first);
    tvb::Buffer fixed;
    encoder.Append(fixed, chosen);
    ASSERT_EQ(fixed, first);
  }
}

TEST(SvfScan, RemembersBlocksWithoutMixingThemUp) {
  std::mt19937 random(4);
  tool::BlockEncoder encoder(false, {});
  std::vector<tvb::Buffer> kinds;
  for (int i = 0; i < 700; ++i) {
    kinds.emplace_back(3 + random() % 40, static_cast<uint8_t>(random()));
    kinds.back()[random() % kinds.back().size()] ^= static_cast<uint8_t>(random());
  }
  for (int round = 0; round < 5000; ++round) {
    const tvb::Buffer &data = kinds[random() % kinds.size()];
    tvb::Buffer block;
    encoder.Append(block, data);
    ASSERT_EQ(block, tvb::EncodeBlock(data));
  }
}

}  // namespace
