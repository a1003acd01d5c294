// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Verification: which bits of TDO are compared with what, and what a difference does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;

class ShiftVerifyTest : public EngineTest {
 protected:
  // A data shift with these blocks, each null when empty. Returns the calls behind the walk.
  std::string Shift(uint32_t bits, const Bytes &tdi, const Bytes &tdo, const Bytes &mask) {
    pins.ClearEvents();
    const auto block = [](const Bytes &bytes) { return bytes.empty() ? nullptr : bytes.data(); };
    Quorlan_SvfShiftDataRegister(bits, block(tdi), block(tdo), block(mask));
    const std::string walk = "K0 M1 K1 K0 M0 K1 K0 M0 K1 ";
    EXPECT_EQ(pins.Text().substr(0, walk.size()), walk);
    return pins.Text().substr(walk.size());
  }
  // What TDO reads from now on, one result a read, then 0.
  void Reads(std::vector<int> results) {
    pins.OnRead([results, next = size_t{0}]() mutable {
      return next < results.size() ? results[next++] : 0;
    });
  }
};

const char kClosing[] = " K0 M1 K1 K0 M0 K1";

TEST_F(ShiftVerifyTest, ReadsBetweenTheLevelsAndTheEdge) {
  Reads({1, 0, 1});
  EXPECT_EQ(Shift(3, {0x40}, {0xA0}, {0xE0}),
            std::string("K0 I0 M0 R1 K1 K0 I1 R0 K1 K0 I0 M1 R1 K1") + kClosing);
  EXPECT_EQ(g_status, 1u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(ShiftVerifyTest, OnlyMaskedBitsAreRead) {
  Reads({1});
  EXPECT_EQ(Shift(4, {0x00}, {0x20}, {0x20}),
            std::string("K0 I0 M0 K1 K0 I0 K1 K0 I0 R1 K1 K0 I0 M1 K1") + kClosing);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftVerifyTest, MaskBitsCountFromTheTopOfEachByte) {
  for (uint32_t bit = 0; bit < 12; ++bit) {
    Bytes mask = {0, 0};
    mask[bit / 8] = static_cast<uint8_t>(0x80 >> bit % 8);
    Shift(12, {0, 0}, {0, 0}, mask);
    size_t period = 0;
    for (const shim::PinEvent &event : pins.events()) {
      period += event.line == shim::kTck && event.level == 0 ? 1 : 0;
      if (event.read) {
        EXPECT_EQ(period, 3 + bit + 1) << bit;
      }
    }
  }
  EXPECT_EQ(pins.reads(), 12u);
}

TEST_F(ShiftVerifyTest, WithoutAMaskNothingIsCompared) {
  Reads({0, 0, 0});
  EXPECT_EQ(Shift(3, {0x00}, {0xFF}, {}),
            std::string("K0 I0 M0 K1 K0 I0 K1 K0 I0 M1 K1") + kClosing);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(pins.reads(), 0u);
}

TEST_F(ShiftVerifyTest, WithoutExpectedBitsZerosAreExpected) {
  Reads({0, 0});
  Shift(2, {0xFF}, {}, {0xFF});
  EXPECT_EQ(g_status, 1u);
  Reads({0, 1});
  Shift(2, {0xFF}, {}, {0xFF});
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftVerifyTest, MismatchLeavesTckLow) {
  Reads({1, 0, 1});
  EXPECT_EQ(Shift(4, {0x60}, {0xF0}, {0xF0}), "K0 I0 M0 R1 K1 K0 I1 R0");
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 2, "Verify Failed\r\n")}));
}

TEST_F(ShiftVerifyTest, MismatchInTheFirstBit) {
  Reads({1});
  EXPECT_EQ(Shift(2, {0x80}, {0x00}, {0x80}), "K0 I1 M0 R1");
}

TEST_F(ShiftVerifyTest, MismatchInTheLastBit) {
  Reads({0, 0});
  EXPECT_EQ(Shift(2, {0x80}, {0x40}, {0xC0}), "K0 I1 M0 R0 K1 K0 I0 M1 R0");
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftVerifyTest, MismatchIsReportedBeforeTheRunIsStopped) {
  uint32_t status = 9;
  shim::OnMessage([&](const shim::Message &) { status = g_status; });
  Reads({1});
  Shift(1, {0x00}, {0x00}, {0x80});
  EXPECT_EQ(status, 1u);
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftVerifyTest, InstructionsAreVerifiedAlike) {
  Reads({0});
  const uint8_t tdi = 0x00, tdo = 0x80, mask = 0x80;
  Quorlan_SvfShiftInsRegister(1, &tdi, &tdo, &mask);
  EXPECT_EQ(pins.Text(), "K0 M1 K1 K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 I0 M1 R0");
  EXPECT_EQ(g_status, 0u);
}

TEST_F(ShiftVerifyTest, OneReportADownload) {
  Reads({1, 1, 1, 1});
  Shift(1, {0x00}, {0x00}, {0x80});
  pins.ClearEvents();
  const uint8_t mask = 0xFF;
  Quorlan_SvfShiftDataRegister(8, &mask, nullptr, &mask);
  Quorlan_SvfShiftInsRegister(8, &mask, nullptr, &mask);
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(8, &mask, nullptr, &mask), nullptr);
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(shim::Messages().size(), 1u);
  EXPECT_EQ(VectorText(), "2A 08 08 4C 4C 4C 4C 4C 4C 4C 6E 2A 08") << "still built";
}

TEST_F(ShiftVerifyTest, AllEightBitsOfAReadingCount) {
  const struct {
    int reading;
    bool matches_one;
    bool matches_zero;
  } readings[] = {{1, true, false},     {0, false, true},    {2, false, false},
                  {0x81, false, false}, {255, false, false}, {0x101, true, false},
                  {0x100, false, true}};
  for (const auto &row : readings) {
    for (const bool one : {false, true}) {
      g_status = 1;
      Reads({row.reading});
      Shift(1, {0x00}, {static_cast<uint8_t>(one ? 0x80 : 0)}, {0x80});
      EXPECT_EQ(g_status, (one ? row.matches_one : row.matches_zero) ? 1u : 0u) << row.reading;
    }
  }
}

TEST_F(ShiftVerifyTest, PaddingIsNeverCompared) {
  const uint8_t ones = 0xFF;
  g_hdr_len = 2;
  Quorlan_GenHeadAndTrailerVec(11, 2, &ones);
  g_tdr_len = 2;
  Quorlan_GenHeadAndTrailerVec(9, 2, &ones);
  Reads({0, 1});
  EXPECT_EQ(Shift(2, {0x00}, {0x40}, {0xFF}),
            "K0 M0 K1 K0 M0 K1 K0 I0 M0 R0 K1 K0 I0 M0 R1 K1 K0 M0 K1 K0 M1 K1 K0 M1 K1 K0 M0 K1");
  EXPECT_EQ(g_status, 1u);
}

TEST_F(ShiftVerifyTest, LongRegister) {
  // A 4,096-bit walking pattern that TDO repeats with one bit wrong.
  Bytes pattern(512);
  for (size_t i = 0; i < pattern.size(); ++i) {
    pattern[i] = static_cast<uint8_t>(i * 37 + 11);
  }
  const Bytes mask(512, 0xFF);
  for (const uint32_t wrong : {0u, 1u, 7u, 8u, 2047u, 4094u, 4095u, 5000u}) {
    g_status = 1;
    uint32_t bit = 0;
    pins.OnRead([&] {
      const int level = pattern[bit / 8] >> (7 - bit % 8) & 1;
      return bit++ == wrong ? 1 - level : level;
    });
    Shift(4096, pattern, pattern, mask);
    EXPECT_EQ(g_status, wrong < 4096 ? 0u : 1u);
    EXPECT_EQ(bit, wrong < 4096 ? wrong + 1 : 4096);
  }
}

}  // namespace
