// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Bit strings packed into bytes.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

class UtilPackTest : public shim::Test {
 protected:
  // The packed bytes with the 0 after them. `bits` is given without a terminator, so that a read
  // past it is noticed.
  static std::vector<uint8_t> Pack(const std::string &bits, int32_t count, int32_t reverse) {
    auto *source = static_cast<uint8_t *>(shim::NewBlock(bits.size()));
    std::copy(bits.begin(), bits.end(), source);
    uint8_t *packed = Quorlan_BinToBytes(source, count, reverse);
    EXPECT_TRUE(std::equal(bits.begin(), bits.end(), source)) << "the source was changed";
    std::vector<uint8_t> bytes(packed, packed + shim::SizeOf(packed));
    kfree(packed);
    return bytes;
  }
};

using Bytes = std::vector<uint8_t>;

TEST_F(UtilPackTest, OneByte) {
  EXPECT_EQ(Pack("10110001", 8, 0), (Bytes{0xB1, 0}));
}

TEST_F(UtilPackTest, OneByteReversed) {
  EXPECT_EQ(Pack("10110001", 8, 1), (Bytes{0x8D, 0}));
}

TEST_F(UtilPackTest, OnlyOneReverses) {
  for (const int32_t reverse : {2, -1, 256, std::numeric_limits<int32_t>::min()}) {
    EXPECT_EQ(Pack("10110001", 8, reverse), (Bytes{0xB1, 0})) << reverse;
  }
}

TEST_F(UtilPackTest, NoBits) {
  EXPECT_EQ(Pack("", 0, 0), (Bytes{0}));
  EXPECT_EQ(Pack("", 0, 1), (Bytes{0}));
}

TEST_F(UtilPackTest, Idcode) {
  EXPECT_EQ(Pack("00001010000000010100110000110101", 32, 0), (Bytes{0x0A, 0x01, 0x4C, 0x35, 0}));
}

TEST_F(UtilPackTest, IdcodeReversed) {
  EXPECT_EQ(Pack("00001010000000010100110000110101", 32, 1), (Bytes{0xAC, 0x32, 0x80, 0x50, 0}));
}

TEST_F(UtilPackTest, PartialByteComesFirstAndShiftsNobody) {
  // Characters 4 to 7 are not used; byte 1 is characters 8 to 15.
  EXPECT_EQ(Pack("1011"
                 "1111"
                 "01000010",
                 12, 0),
            (Bytes{0x0B, 0x42, 0}));
  EXPECT_EQ(Pack("0100"
                 "0000"
                 "10111101",
                 12, 0),
            (Bytes{0x04, 0xBD, 0}));
}

TEST_F(UtilPackTest, PartialByteAlone) {
  EXPECT_EQ(Pack("1", 1, 0), (Bytes{0x01, 0}));
  EXPECT_EQ(Pack("110", 3, 0), (Bytes{0x06, 0}));
  EXPECT_EQ(Pack("1000000", 7, 0), (Bytes{0x40, 0}));
}

TEST_F(UtilPackTest, NineBits) {
  EXPECT_EQ(Pack("1"
                 "0101010"
                 "11001100",
                 9, 0),
            (Bytes{0x01, 0xCC, 0}));
}

TEST_F(UtilPackTest, PartialByteAloneReversed) {
  EXPECT_EQ(Pack("110", 3, 1), (Bytes{0x03, 0}));
}

TEST_F(UtilPackTest, CharactersCountByTheirDistanceFromZero) {
  // What a capture holds when a line reads 2: the sum, kept to 8 bits.
  EXPECT_EQ(Pack("20000000", 8, 0), (Bytes{0x00, 0}));
  EXPECT_EQ(Pack("02000000", 8, 0), (Bytes{0x80, 0}));
  EXPECT_EQ(Pack("00000012", 8, 0), (Bytes{0x04, 0}));
  // One below '0' is -1.
  EXPECT_EQ(Pack("0000000/", 8, 0), (Bytes{0xFF, 0}));
}

TEST_F(UtilPackTest, RequestsOneBlock) {
  Pack("00001010000000010100110000110101", 32, 0);
  ASSERT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(shim::Allocations()[0].size, 5u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(UtilPackTest, RequestsAWorkingCopyToReverse) {
  Pack("10110001", 8, 1);
  EXPECT_EQ(RequestedSizes(), (std::vector<size_t>{2, 9}));
  EXPECT_EQ(shim::Allocations()[1].flags, shim::kGfpKernel);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(UtilPackTest, ReversedPartialCountsStayInTheCopy) {
  // Byte 1 reaches past the twelve characters, where there is nothing to read: only byte 0 counts.
  const Bytes packed = Pack("111100001011", 12, 1);
  ASSERT_EQ(packed.size(), 3u);
  EXPECT_EQ(packed[0], 0x0D);
  EXPECT_EQ(packed[2], 0);
}

TEST_F(UtilPackTest, WithoutMemoryForTheResultIsNull) {
  for (const int32_t reverse : {0, 1}) {
    shim::FailAllocation(1);
    EXPECT_EQ(Quorlan_BinToBytes(shim::NewString("10110001"), 8, reverse), nullptr);
  }
  EXPECT_EQ(shim::LiveRequests(), 0u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(UtilPackTest, WithoutMemoryForTheCopyIsNull) {
  shim::FailAllocation(2);
  EXPECT_EQ(Quorlan_BinToBytes(shim::NewString("10110001"), 8, 1), nullptr);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(UtilPackTest, NegativeAndImpossibleCountsTouchNothing) {
  auto *block = static_cast<uint8_t *>(shim::NewBlock(0));
  for (const int32_t count :
       {-1, -8, -32, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    EXPECT_EQ(Quorlan_BinToBytes(block, count, 0), nullptr) << count;
    EXPECT_EQ(Quorlan_BinToBytes(block, count, 1), nullptr) << count;
  }
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

}  // namespace
