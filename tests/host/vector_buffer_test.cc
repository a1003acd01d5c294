// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The vector's buffer: when it is allocated, kept, emptied and grown, and what follows when memory
// cannot be had.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

class VectorBufferTest : public EngineTest {
 protected:
  static void Append(int count) {
    for (int i = 0; i < count; ++i) {
      Quorlan_GenVec();
    }
  }
  static std::string Vector() {
    return String(g_vector);
  }
  static shim::Message NoMemory(const std::string &size) {
    return shim::Printk("Error: malloc/realloc failed, size " + size + "\n");
  }
};

TEST_F(VectorBufferTest, AllocatesTheRecordedSizeAndOneByte) {
  Quorlan_MemSet(100);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3201}));
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(g_vector, shim::Allocations()[0].pointer);
  EXPECT_EQ(g_vector_size, 3200u);
  EXPECT_EQ(g_vector[0], 0);
  EXPECT_EQ(g_vector[1], shim::kFill);
}

TEST_F(VectorBufferTest, AllocatesForALargerLength) {
  Quorlan_MemSet(3201);
  EXPECT_EQ(g_vector_size, 3201u);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3202}));
}

TEST_F(VectorBufferTest, SmallerAndEqualLengthsKeepTheRecordedSize) {
  for (const uint32_t length : {0u, 1u, 3199u, 3200u}) {
    Quorlan_MemSet(length);
    EXPECT_EQ(g_vector_size, 3200u);
  }
  EXPECT_EQ(shim::Allocations().size(), 1u);
}

TEST_F(VectorBufferTest, RecordedSizeIsNeverLowered) {
  Quorlan_MemSet(5000);
  Quorlan_MemSet(10);
  EXPECT_EQ(g_vector_size, 5000u);
  Quorlan_FreeMemory();
  Quorlan_MemSet(20);
  EXPECT_EQ(g_vector_size, 5000u);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{5001, 5001}));
}

TEST_F(VectorBufferTest, ExistingBufferIsEmptiedAndKept) {
  Quorlan_Reset();
  uint8_t *const buffer = g_vector;
  Quorlan_MemSet(5000);
  EXPECT_EQ(g_vector, buffer);
  EXPECT_EQ(g_vector[0], 0);
  EXPECT_EQ(g_vector[1], 0x2A) << "emptied by its first byte alone";
  EXPECT_EQ(g_vector_size, 5000u);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200}));
  Quorlan_Reset();
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 5000}));
}

TEST_F(VectorBufferTest, AnAppendThatDoesNotFitGrowsTheBuffer) {
  Quorlan_Reset();
  Quorlan_MemSet(5000);
  Append(3199);
  EXPECT_EQ(shim::Allocations().size(), 1u);
  Quorlan_GenVec();
  ASSERT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 5001}));
  EXPECT_TRUE(shim::Allocations()[1].reallocated);
  EXPECT_EQ(shim::Allocations()[1].flags, shim::kGfpKernel);
  EXPECT_EQ(g_vector, shim::Allocations()[1].pointer);
  EXPECT_EQ(Vector(), std::string(3200, 0x08));
  Append(1800);
  EXPECT_EQ(Vector(), std::string(5000, 0x08));
  EXPECT_EQ(shim::Allocations().size(), 2u);
  EXPECT_EQ(g_vector_size, 5000u);
}

TEST_F(VectorBufferTest, ABufferOfTheExactSizeGrowsForItsTerminator) {
  Quorlan_Reset();
  Quorlan_MemSet(3200);
  Append(3200);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 3201}));
  EXPECT_EQ(Vector(), std::string(3200, 0x08));
}

TEST_F(VectorBufferTest, AGrownBufferIsKept) {
  Quorlan_Reset();
  Quorlan_MemSet(9000);
  Append(9000);
  Quorlan_MemSet(9000);
  Append(9000);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 9001}));
  EXPECT_EQ(Vector(), std::string(9000, 0x08));
}

TEST_F(VectorBufferTest, AppendsBeyondWhatWasAskedForStillFit) {
  g_vector_size = 4;
  Quorlan_MemSet(4);
  Append(1000);
  EXPECT_EQ(Vector(), std::string(1000, 0x08));
  EXPECT_EQ(g_vector_size, 4u);
}

TEST_F(VectorBufferTest, AReplacedBufferGrowsFromTheRecordedSize) {
  g_vector_size = 16;
  g_vector = static_cast<uint8_t *>(shim::NewBlock(16));
  g_vector[0] = 0;
  Quorlan_MemSet(40);
  Append(40);
  EXPECT_EQ(Vector(), std::string(40, 0x08));
}

TEST_F(VectorBufferTest, ASmallerBufferThatTookItsPlaceGrows) {
  Quorlan_Reset();
  kfree(g_vector);
  g_vector_size = 16;
  g_vector = static_cast<uint8_t *>(shim::NewBlock(16));
  g_vector[0] = 0;
  Append(40);
  EXPECT_EQ(Vector(), std::string(40, 0x08));
}

TEST_F(VectorBufferTest, WithoutMemoryItIsReported) {
  shim::FailAllocation(1);
  Quorlan_MemSet(3300);
  EXPECT_EQ(shim::Messages(), (Messages{NoMemory("3300")}));
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_EQ(g_vector_size, 3300u);
  EXPECT_EQ(g_status, 0u);
}

TEST_F(VectorBufferTest, BuildingGoesOnWithoutABuffer) {
  shim::FailAllocation(1);
  Quorlan_MemSet(10);
  Append(10);
  Quorlan_StateConfig(1);
  EXPECT_EQ(g_vector, nullptr);
  Quorlan_Transfer(nullptr, 0, 10);
  EXPECT_EQ(pins.Text(), "");
  g_status = 1;
  g_vec_val = 0;
  Quorlan_MemSet(10);
  Append(2);
  EXPECT_EQ(VectorText(), "08 08");
}

TEST_F(VectorBufferTest, AnEmptiedBufferNeedsNoMemory) {
  Quorlan_MemSet(10);
  shim::FailAllocationsFrom(1);
  Quorlan_MemSet(4000);
  EXPECT_EQ(g_status, 1u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(VectorBufferTest, WithoutMemoryToGrowTheVectorIsGivenUp) {
  Quorlan_Reset();
  uint8_t *const buffer = g_vector;
  Quorlan_MemSet(4000);
  shim::FailAllocation(1);
  Quorlan_SvfShiftExit(4000, nullptr, nullptr, 0);
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(g_vector, buffer);
  EXPECT_EQ(shim::Allocations().size(), 2u) << "asked for once, not at every append";
  pins.ClearEvents();
  Quorlan_Transfer(nullptr, 0, 3000);
  EXPECT_EQ(Quorlan_TransferAndReadTDO(nullptr, 0, 3000), nullptr);
  EXPECT_EQ(pins.Text(), "");
}

TEST_F(VectorBufferTest, ACharacterThatDoesNotFitAsksForMemoryByItself) {
  Quorlan_Reset();
  Quorlan_MemSet(4000);
  Append(3199);
  shim::FailAllocationsFrom(1);
  Append(2);
  EXPECT_EQ(shim::Messages(), (Messages{NoMemory("4000"), NoMemory("4000")}));
  EXPECT_EQ(Vector(), std::string(3199, 0x08));
  shim::FailAllocation(0);
  g_status = 1;
  Append(1);
  EXPECT_EQ(Vector(), std::string(3200, 0x08)) << "that memory was wanting once does not show";
  EXPECT_EQ(g_status, 1u);
}

TEST_F(VectorBufferTest, ABufferOfASizeThatWasLoweredIsTheCallersOwn) {
  // As where a caller's new buffer comes to lie where the driver's was.
  Quorlan_Reset();
  g_vector[0] = 0;
  g_vector_size = 16;
  Append(15);
  EXPECT_EQ(shim::Allocations().size(), 1u);
  Append(1);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{3200, 17}));
}

TEST_F(VectorBufferTest, AVectorWithoutItsTerminatorIsNotReadPastItsBuffer) {
  Quorlan_MemSet(4);
  std::fill_n(g_vector, 3201, 'L');
  pins.Record(false);
  Quorlan_Transfer(nullptr, 0, 3201);
  EXPECT_EQ(pins.writes(), 3u * 3201 + 2) << "two of TCK and one of TDI each, TMS at both ends";
  Quorlan_GenVec();
  EXPECT_EQ(Vector(), std::string(3201, 'L') + '\x08');
}

TEST_F(VectorBufferTest, AVectorThatWasGivenUpIsBuiltAgainOnceEmptied) {
  Quorlan_Reset();
  Quorlan_MemSet(4000);
  shim::FailAllocation(1);
  Append(4000);
  g_status = 1;
  Quorlan_MemSet(4000);
  Append(4000);
  EXPECT_EQ(Vector(), std::string(4000, 0x08));
  EXPECT_EQ(g_status, 1u);
}

TEST_F(VectorBufferTest, LengthsThatNoKernelHasAreNotAskedFor) {
  Quorlan_MemSet(0xFFFFFFFF);
  EXPECT_EQ(shim::Messages(), (Messages{NoMemory("-1")}));
  EXPECT_EQ(g_vector_size, 0xFFFFFFFFu);
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_EQ(g_status, 0u);
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(VectorBufferTest, TheLargestBlockHoldsTheLongestVector) {
  Quorlan_MemSet((4 << 20) - 1);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{4 << 20}));
  Quorlan_FreeMemory();
  Quorlan_MemSet(4 << 20);
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_EQ(shim::Messages(), (Messages{NoMemory("4194304")}));
}

TEST_F(VectorBufferTest, AVectorThatCannotEndInsideABlockIsGivenUp) {
  Quorlan_MemSet(10);
  Quorlan_MemSet(4 << 20);
  Quorlan_SvfShiftExit(4 << 20, nullptr, nullptr, 0);
  EXPECT_EQ(g_status, 0u);
  EXPECT_LT(Vector().size(), size_t{4} << 20);
}

}  // namespace
