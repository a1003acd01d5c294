// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The TAP reset that opens every download.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

const char kResetVector[] = "2A 2A 2A 2A 2A 2A 2A 2A 2A 2A 08";

class VectorResetTest : public EngineTest {};

TEST_F(VectorResetTest, FirstResetAllocates3200Bytes) {
  EXPECT_EQ(Quorlan_Reset(), 0);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200}));
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(g_vector, shim::Allocations()[0].pointer);
  EXPECT_EQ(VectorText(), kResetVector);
  EXPECT_EQ(g_vector_size, 3200u);
}

TEST_F(VectorResetTest, PinCalls) {
  Quorlan_Reset();
  EXPECT_EQ(pins.Text(),
            "K0 I0 M1 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 K0 I0 K1 "
            "K0 I0 K1 K0 I0 K1 K0 I0 M0 K1");
}

TEST_F(VectorResetTest, ReplacesTheBuffer) {
  g_vector = shim::NewString("n");
  uint8_t *const old = g_vector;
  Quorlan_Reset();
  EXPECT_FALSE(shim::IsLive(old));
  EXPECT_EQ(VectorText(), kResetVector);
}

TEST_F(VectorResetTest, TakesTheLargestLengthSoFar) {
  g_vector_size = 7000;
  Quorlan_Reset();
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{7000}));
  EXPECT_EQ(g_vector_size, 7000u);
}

TEST_F(VectorResetTest, TakesTheLargestBlock) {
  g_vector_size = 4 << 20;
  Quorlan_Reset();
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{4 << 20}));
}

TEST_F(VectorResetTest, FitsASizeThatIsTooSmallForIt) {
  g_vector_size = 5;
  EXPECT_EQ(Quorlan_Reset(), 0);
  EXPECT_EQ(VectorText(), kResetVector);
  EXPECT_EQ(pins.Text(), ResetCalls());
}

TEST_F(VectorResetTest, FitsASizeOfZero) {
  g_vector_size = 0;
  EXPECT_EQ(Quorlan_Reset(), 0);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{0, 2, 4, 8, 16}));
  EXPECT_EQ(VectorText(), kResetVector);
  EXPECT_EQ(pins.Text(), ResetCalls());
  EXPECT_EQ(g_vector_size, 0u);
}

TEST_F(VectorResetTest, ABlockOfNoBytesIsLeftAlone) {
  g_vector_size = 0;
  shim::FailAllocationsFrom(2);
  EXPECT_EQ(Quorlan_Reset(), 0);
  ASSERT_NE(g_vector, nullptr);
  g_status = 1;
  Quorlan_Transfer(nullptr, 0, 1);
  Quorlan_MemSet(0);
  Quorlan_GenVec();
  EXPECT_EQ(pins.Text(), "");
  shim::VerifyMemory();
}

TEST_F(VectorResetTest, NullIsNotFreed) {
  Quorlan_Reset();
  EXPECT_EQ(shim::FreesOfNull(), 0u);
}

TEST_F(VectorResetTest, SetsEveryLevelAndKeepsTheOtherBits) {
  g_vec_val = 0xFFFFFFFF;
  Quorlan_Reset();
  EXPECT_EQ(VectorText(), kResetVector);
  EXPECT_EQ(g_vec_val, 0xFFFFFFF1u);
}

TEST_F(VectorResetTest, StoppedRunBuildsAndPlaysNothing) {
  for (const uint32_t status : {0u, 2u, 0xFFFFFFFFu}) {
    g_status = status;
    EXPECT_EQ(Quorlan_Reset(), 0);
    EXPECT_EQ(VectorText(), kResetVector);
    EXPECT_EQ(pins.Text(), "");
    EXPECT_EQ(g_status, status);
  }
}

TEST_F(VectorResetTest, ReportsNothingAndReadsNothing) {
  Quorlan_Reset();
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(pins.reads(), 0u);
}

TEST_F(VectorResetTest, WithoutMemoryNothingIsPlayed) {
  g_vector = shim::NewString("n");
  uint8_t *const old = g_vector;
  shim::FailAllocation(1);
  EXPECT_EQ(Quorlan_Reset(), 0);
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_FALSE(shim::IsLive(old));
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(g_status, 0u);
}

TEST_F(VectorResetTest, AfterAnImpossibleLengthTheNextResetIsPlayed) {
  Quorlan_MemSet(0xFFFFFFFF);
  g_status = 1;
  EXPECT_EQ(Quorlan_Reset(), 0);
  EXPECT_EQ(VectorText(), kResetVector);
  EXPECT_EQ(pins.Text(), ResetCalls());
  EXPECT_EQ(g_vector_size, 0xFFFFFFFFu);
}

}  // namespace
