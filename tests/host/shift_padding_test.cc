// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Header and trailer registers as vectors.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

using Bytes = std::vector<uint8_t>;

// The registers in the order of their opcodes.
struct Register {
  signed char opcode;
  uint8_t **vector;
  bool trailer;
};
const Register kRegisters[] = {{9, &g_tdr_vector, true},
                               {10, &g_tir_vector, true},
                               {11, &g_hdr_vector, false},
                               {12, &g_hir_vector, false}};

const char kUnknownOpcode[] = "Error: Generate Head/Trailer vector failed: unkown opcode.\n\n";

class ShiftPaddingTest : public EngineTest {};

TEST_F(ShiftPaddingTest, EachOpcodeHasItsRegister) {
  const Bytes data = {0xB0};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 4, data.data());
    EXPECT_EQ(VectorText(*made.vector), made.trailer ? "4C 08 4C 6E" : "4C 08 4C 4C");
    for (const Register &other : kRegisters) {
      EXPECT_EQ(*other.vector != nullptr, other.opcode <= made.opcode);
    }
  }
}

TEST_F(ShiftPaddingTest, OnlyTrailersLeaveTheShiftState) {
  const Bytes zeros = {0x00}, ones = {0xFF};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 2, zeros.data());
    EXPECT_EQ(VectorText(*made.vector), made.trailer ? "08 2A" : "08 08");
    Quorlan_GenHeadAndTrailerVec(made.opcode, 2, ones.data());
    EXPECT_EQ(VectorText(*made.vector), made.trailer ? "4C 6E" : "4C 4C");
    Quorlan_GenHeadAndTrailerVec(made.opcode, 1, ones.data());
    EXPECT_EQ(VectorText(*made.vector), made.trailer ? "6E" : "4C");
  }
}

TEST_F(ShiftPaddingTest, BitsInTheOrderOfShifts) {
  const Bytes data = {0x81, 0x40, 0xFF};
  Quorlan_GenHeadAndTrailerVec(11, 12, data.data());
  EXPECT_EQ(VectorText(g_hdr_vector), "4C 08 08 08 08 08 08 4C 08 4C 08 08");
}

TEST_F(ShiftPaddingTest, AllocatesABitAByteAndTheTerminator) {
  const Bytes data(4, 0x00);
  Quorlan_GenHeadAndTrailerVec(12, 25, data.data());
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{26}));
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(g_hir_vector, shim::Allocations()[0].pointer);
  EXPECT_EQ(g_hir_vector[25], 0);
}

TEST_F(ShiftPaddingTest, ReplacesTheVector) {
  const Bytes data = {0xF0};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 3, data.data());
    uint8_t *const old = *made.vector;
    Quorlan_GenHeadAndTrailerVec(made.opcode, 5, data.data());
    EXPECT_FALSE(shim::IsLive(old));
    EXPECT_EQ(String(*made.vector).size(), 5u);
  }
  EXPECT_EQ(shim::LiveRequests(), 4u);
}

TEST_F(ShiftPaddingTest, NoBitsMeanNoVector) {
  const Bytes data = {0xFF};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 8, data.data());
    uint8_t *const old = *made.vector;
    Quorlan_GenHeadAndTrailerVec(made.opcode, 0, nullptr);
    EXPECT_EQ(*made.vector, nullptr);
    EXPECT_FALSE(shim::IsLive(old));
    Quorlan_GenHeadAndTrailerVec(made.opcode, 0, data.data());
    EXPECT_EQ(*made.vector, nullptr);
  }
  EXPECT_EQ(shim::Allocations().size(), 4u);
}

TEST_F(ShiftPaddingTest, WithoutBytesTheVectorIsZeros) {
  Quorlan_GenHeadAndTrailerVec(12, 3, nullptr);
  EXPECT_EQ(VectorText(g_hir_vector), "08 08 08");
  Quorlan_GenHeadAndTrailerVec(10, 3, nullptr);
  EXPECT_EQ(VectorText(g_tir_vector), "08 08 2A");
}

TEST_F(ShiftPaddingTest, OtherOpcodesAreReportedAndChangeNothing) {
  const Bytes data = {0xFF};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 2, data.data());
  }
  std::vector<std::string> before;
  for (const Register &made : kRegisters) {
    before.push_back(VectorText(*made.vector));
  }
  const size_t requests = shim::Allocations().size();
  Messages messages;
  for (int opcode = -128; opcode < 128; ++opcode) {
    if (opcode >= 9 && opcode <= 12) {
      continue;
    }
    Quorlan_GenHeadAndTrailerVec(static_cast<signed char>(opcode), 8, data.data());
    messages.push_back(shim::Printk(kUnknownOpcode));
  }
  EXPECT_EQ(shim::Messages(), messages);
  EXPECT_EQ(shim::Allocations().size(), requests);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(VectorText(*kRegisters[i].vector), before[i]);
  }
}

TEST_F(ShiftPaddingTest, WithoutMemoryTheRegisterHasNoVector) {
  const Bytes data = {0xFF};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 8, data.data());
    uint8_t *const old = *made.vector;
    shim::FailAllocation(1);
    Quorlan_GenHeadAndTrailerVec(made.opcode, 8, data.data());
    EXPECT_EQ(*made.vector, nullptr);
    EXPECT_FALSE(shim::IsLive(old));
    EXPECT_EQ(g_status, 0u) << "no later shift may be played without it";
    EXPECT_EQ(g_stop_code, -2);
    g_status = 1;
  }
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(ShiftPaddingTest, ImpossibleAndNegativeLengthsLeaveNoVector) {
  for (const int32_t bits : {-1, -8, std::numeric_limits<int32_t>::min(), 4 << 20,
                             std::numeric_limits<int32_t>::max()}) {
    for (const Register &made : kRegisters) {
      Quorlan_GenHeadAndTrailerVec(made.opcode, bits, nullptr);
      EXPECT_EQ(*made.vector, nullptr) << bits;
      EXPECT_EQ(g_status, 0u) << bits;
      g_status = 1;
    }
  }
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(ShiftPaddingTest, LengthsAndBytesAreSomebodyElses) {
  const Bytes data = {0xFF};
  for (const Register &made : kRegisters) {
    Quorlan_GenHeadAndTrailerVec(made.opcode, 8, data.data());
  }
  EXPECT_EQ(g_tdr_len | g_tir_len | g_hdr_len | g_hir_len, 0u);
  for (const uint8_t *bytes : {g_tdr_data, g_tir_data, g_hdr_data, g_hir_data}) {
    EXPECT_EQ(bytes, nullptr);
  }
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(g_vector, nullptr);
}

TEST_F(ShiftPaddingTest, VectorsStayForEveryLaterShift) {
  const uint8_t hdr = 0x80, tdi = 0x80;
  g_hdr_len = 1;
  Quorlan_GenHeadAndTrailerVec(11, 1, &hdr);
  for (int i = 0; i < 3; ++i) {
    Quorlan_SvfShiftDataRegister(1, &tdi, nullptr, nullptr);
    EXPECT_EQ(VectorText(), "2A 08 08 4C 6E 2A 08");
  }
  EXPECT_EQ(VectorText(g_hdr_vector), "4C");
}

}  // namespace
