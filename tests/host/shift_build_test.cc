// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Shifts as vectors: walk, header, data, trailer, closing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;

class ShiftBuildTest : public EngineTest {
 protected:
  // A register of `bits` bits, stored as its record would: length, no bytes, vector.
  static void Store(signed char opcode, uint32_t *length, uint32_t bits, const Bytes &data) {
    *length = bits;
    Quorlan_GenHeadAndTrailerVec(opcode, static_cast<int32_t>(bits), data.data());
  }
  static void StoreTdr(uint32_t bits, const Bytes &data) {
    Store(9, &g_tdr_len, bits, data);
  }
  static void StoreTir(uint32_t bits, const Bytes &data) {
    Store(10, &g_tir_len, bits, data);
  }
  static void StoreHdr(uint32_t bits, const Bytes &data) {
    Store(11, &g_hdr_len, bits, data);
  }
  static void StoreHir(uint32_t bits, const Bytes &data) {
    Store(12, &g_hir_len, bits, data);
  }

  // The vector of a shift. The run is stopped, so nothing is played.
  static std::string Ins(uint32_t bits, const Bytes &tdi, const Bytes &tdo = {}) {
    g_status = 0;
    Quorlan_SvfShiftInsRegister(bits, tdi.data(), tdo.empty() ? nullptr : tdo.data(), nullptr);
    return VectorText();
  }
  static std::string Data(uint32_t bits, const Bytes &tdi, const Bytes &tdo = {}) {
    g_status = 0;
    Quorlan_SvfShiftDataRegister(bits, tdi.data(), tdo.empty() ? nullptr : tdo.data(), nullptr);
    return VectorText();
  }
  // What SvfShiftExit alone appends.
  static std::string Exit(int32_t bits, const Bytes &tdi, int32_t kind) {
    Quorlan_MemSet(100);
    Quorlan_SvfShiftExit(bits, tdi.data(), nullptr, kind);
    return VectorText();
  }
};

TEST_F(ShiftBuildTest, InstructionExample) {
  EXPECT_EQ(Ins(8, {0x60}), "2A 2A 08 08 08 4C 4C 08 08 08 08 2A 2A 08");
}

TEST_F(ShiftBuildTest, InstructionWithTrailerExample) {
  StoreTir(8, {0xFF});
  EXPECT_EQ(Ins(8, {0x60}), "2A 2A 08 08 08 4C 4C 08 08 08 08 08 4C 4C 4C 4C 4C 4C 4C 6E 2A 08");
}

TEST_F(ShiftBuildTest, DataWalk) {
  EXPECT_EQ(Data(8, {0x60}), "2A 08 08 08 4C 4C 08 08 08 08 2A 2A 08");
}

TEST_F(ShiftBuildTest, NoBitsAndNoPadding) {
  EXPECT_EQ(Data(0, {}), "2A 08 08 2A 08");
  EXPECT_EQ(Ins(0, {}), "2A 2A 08 08 2A 08");
}

TEST_F(ShiftBuildTest, LastBitLeavesTheShiftState) {
  EXPECT_EQ(Data(1, {0x80}), "2A 08 08 6E 2A 08");
  EXPECT_EQ(Data(1, {0x7F}), "2A 08 08 2A 2A 08");
  EXPECT_EQ(Data(2, {0xC0}), "2A 08 08 4C 6E 2A 08");
}

TEST_F(ShiftBuildTest, PartialBytesCountFromTheirTop) {
  // Twelve bits: all of byte 0, the upper half of byte 1.
  EXPECT_EQ(Data(12, {0xA5, 0x9F}), "2A 08 08 4C 08 4C 08 08 4C 08 4C 4C 08 08 6E 2A 08");
  EXPECT_EQ(Data(12, {0xA5, 0x80}), Data(12, {0xA5, 0x8F}));
}

TEST_F(ShiftBuildTest, BytesGoInOrder) {
  EXPECT_EQ(Data(16, {0x80, 0x01}),
            "2A 08 08 " + std::string("4C ") + Repeated(14, "08") + " 6E 2A 08");
}

TEST_F(ShiftBuildTest, ExpectedBitsAreCarried) {
  EXPECT_EQ(Data(4, {0x50}, {0x30}), "2A 08 08 08 4C 19 7F 2A 08");
  EXPECT_EQ(Ins(4, {0x50}, {0x90}), "2A 2A 08 08 19 4C 08 7F 2A 08");
  EXPECT_EQ(Data(9, {0x00, 0x00}, {0x00, 0x80}), "2A 08 08 08 08 08 08 08 08 08 08 3B 2A 08");
}

TEST_F(ShiftBuildTest, WithoutExpectedBitsTheyAreZero) {
  g_vec_val = 0x0E;
  EXPECT_EQ(Data(3, {0x00}), "2A 08 08 08 08 2A 2A 08");
  EXPECT_EQ(g_vec_val, 0u);
}

TEST_F(ShiftBuildTest, ExpectedBitsDoNotReachTheClosing) {
  EXPECT_EQ(Data(2, {0xC0}, {0xC0}), "2A 08 08 5D 7F 2A 08");
}

TEST_F(ShiftBuildTest, WithoutTdiZerosAreShifted) {
  g_status = 0;
  Quorlan_SvfShiftDataRegister(3, nullptr, nullptr, nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 08 08 2A 2A 08");
  const Bytes tdo = {0xE0};
  Quorlan_SvfShiftInsRegister(3, nullptr, tdo.data(), nullptr);
  EXPECT_EQ(VectorText(), "2A 2A 08 08 19 19 3B 2A 08");
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(2, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(VectorText(), "2A 08 08 08 2A 2A 08");
}

TEST_F(ShiftBuildTest, EachKindHasItsOwnPadding) {
  StoreHir(1, {0x80});
  StoreTir(2, {0x40});
  StoreHdr(3, {0xA0});
  StoreTdr(4, {0x10});
  EXPECT_EQ(Ins(2, {0xC0}), "2A 2A 08 08 4C 4C 4C 08 6E 2A 08");
  EXPECT_EQ(Data(2, {0xC0}), "2A 08 08 4C 08 4C 4C 4C 08 08 08 6E 2A 08");
}

TEST_F(ShiftBuildTest, HeaderAloneLeavesTheLastDataBitLast) {
  StoreHdr(2, {0x40});
  EXPECT_EQ(Data(2, {0x00}), "2A 08 08 08 4C 08 2A 2A 08");
}

TEST_F(ShiftBuildTest, PaddingAloneIsShiftedToo) {
  StoreHdr(2, {0x40});
  StoreTdr(2, {0x80});
  EXPECT_EQ(Data(0, {}), "2A 08 08 08 4C 4C 2A 2A 08");
}

TEST_F(ShiftBuildTest, PaddingThatEndsOnZero) {
  StoreTdr(1, {0x00});
  EXPECT_EQ(Data(1, {0x80}), "2A 08 08 4C 2A 2A 08");
}

TEST_F(ShiftBuildTest, CaptureBuildsTheDataShift) {
  StoreHdr(1, {0x80});
  StoreTdr(1, {0x80});
  const Bytes tdi = {0x60}, tdo = {0x40}, mask = {0xFF};
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(4, tdi.data(), tdo.data(), mask.data())[0], '0');
  EXPECT_EQ(VectorText(), "2A 08 08 4C 08 5D 4C 08 6E 2A 08");
  AllowLeaks(1);
}

TEST_F(ShiftBuildTest, ExitTakesTheInstructionPaddingForKindOneOnly) {
  StoreHir(1, {0x80});
  StoreTir(1, {0x80});
  EXPECT_EQ(Exit(1, {0x00}, 1), "4C 08 6E");
  for (const int32_t kind : {0, 2, -1, 257}) {
    EXPECT_EQ(Exit(1, {0x00}, kind), "2A") << kind;
  }
}

TEST_F(ShiftBuildTest, ExitTakesTheDataPaddingForOtherKinds) {
  StoreHdr(1, {0x80});
  StoreTdr(1, {0x80});
  EXPECT_EQ(Exit(1, {0x00}, 0), "4C 08 6E");
  EXPECT_EQ(Exit(1, {0x00}, 2), "4C 08 6E");
  EXPECT_EQ(Exit(1, {0x00}, 1), "2A");
}

TEST_F(ShiftBuildTest, ExitWithoutBitsHasPaddingAlone) {
  StoreHir(1, {0x80});
  StoreTir(1, {0x00});
  for (const int32_t bits : {0, -1, -8, -2147483647 - 1}) {
    EXPECT_EQ(Exit(bits, {}, 1), "4C 2A") << bits;
    EXPECT_EQ(Exit(bits, {}, 0), "") << bits;
  }
}

TEST_F(ShiftBuildTest, ExitClearsTheExpectedLevelAtOnce) {
  Quorlan_MemSet(10);
  g_vec_val = 0xFFFFFFFF;
  Quorlan_SvfShiftExit(0, nullptr, nullptr, 0);
  EXPECT_EQ(g_vec_val, 0xFFFFFFFBu);
  const uint8_t tdo = 0;
  g_vec_val = 0xFFFFFFFF;
  Quorlan_SvfShiftExit(0, nullptr, &tdo, 0);
  EXPECT_EQ(g_vec_val, 0xFFFFFFFFu);
}

TEST_F(ShiftBuildTest, LevelsKeepTheBitsWithoutAMeaning) {
  g_vec_val = 0xFFFFFFFF;
  EXPECT_EQ(Data(2, {0x80}), "2A 08 08 4C 2A 2A 08");
  EXPECT_EQ(g_vec_val, 0xFFFFFFF1u);
}

TEST_F(ShiftBuildTest, AsksForExactlyTheVectorsLength) {
  StoreHir(3, {0x00});
  StoreTir(5, {0x00});
  StoreHdr(7, {0x00});
  StoreTdr(11, {0x00, 0x00});
  g_vector_size = 1;
  Ins(20, {0, 0, 0});
  EXPECT_EQ(g_vector_size, 20u + 5 + 3 + 6);
  EXPECT_EQ(shim::SizeOf(g_vector), 35u);
  EXPECT_EQ(String(g_vector).size(), 34u);
  g_vector_size = 1;
  Data(20, {0, 0, 0});
  EXPECT_EQ(g_vector_size, 20u + 11 + 7 + 5);
  EXPECT_EQ(String(g_vector).size(), 43u);
  g_vector_size = 1;
  EXPECT_EQ(Quorlan_SvfShiftDataRegisterAndReadTDO(4, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(g_vector_size, 4u + 11 + 7 + 5);
}

TEST_F(ShiftBuildTest, AFreshBufferHoldsTheVectorExactly) {
  g_vector_size = 1;
  Ins(8, {0x60});
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{15}));
}

TEST_F(ShiftBuildTest, EachShiftStartsAfresh) {
  Data(8, {0xFF});
  EXPECT_EQ(Data(1, {0x00}), "2A 08 08 2A 2A 08");
}

}  // namespace
