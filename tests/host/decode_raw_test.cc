// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The choice of the decoder and the raw paths of Quorlan_ProcessData.
#include "session.h"

namespace {

using image::Bytes;
using session::Content;
using session::Owned;

class DecodeRaw : public session::SessionTest {
 protected:
  // Decodes a block of `count` bytes that stands at index 0.
  Owned Process(uint8_t compress, const Bytes &block, u32 count) {
    g_compress = compress;
    Load(block);
    return Owned(Quorlan_ProcessData(count));
  }

  // The one allocation that was made.
  void ExpectAllocation(size_t size, uint32_t flags) {
    ASSERT_EQ(shim::Allocations().size(), 1u);
    EXPECT_EQ(shim::Allocations()[0].size, size);
    EXPECT_EQ(shim::Allocations()[0].flags, flags);
  }
};

TEST_F(DecodeRaw, HeaderWithoutModeBytesCopiesTheBytes) {
  const Owned data = Process(0xF2, {0x01, 0x02, 0x03, 0x99}, 3);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 4), (Bytes{0x01, 0x02, 0x03, 0x00}));
  EXPECT_EQ(g_pos, 3u);
  ExpectAllocation(4, shim::kGfpKernelZero);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(DecodeRaw, CopyStartsAtThePosition) {
  g_compress = 0xF2;
  Load({0x01, 0x02, 0x03, 0x99});
  g_pos = 2;
  const Owned data(Quorlan_ProcessData(1));
  EXPECT_EQ(Content(data, 2), (Bytes{0x03, 0x00}));
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(DecodeRaw, CopyDoesNotMirror) {
  g_buffer[0] = g_buffer[1] = 0xEE;
  const Owned data = Process(0xF2, {0x01, 0x02}, 2);
  EXPECT_EQ(Content(g_buffer, 2), (Bytes{0xEE, 0xEE}));
}

TEST_F(DecodeRaw, NoBytesGiveASingleNulAndReadNothing) {
  const Owned data = Process(0xF2, {}, 0);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 1), (Bytes{0x00}));
  EXPECT_EQ(g_pos, 0u);
  ExpectAllocation(1, shim::kGfpKernelZero);
}

TEST_F(DecodeRaw, ModeZeroCopiesBehindItsModeByte) {
  g_buffer[1] = 0xEE;
  const Owned data = Process(0x00, {0x00, 0x11, 0x22, 0x99}, 2);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 3), (Bytes{0x11, 0x22, 0x00}));
  EXPECT_EQ(g_pos, 3u);
  ExpectAllocation(3, shim::kGfpKernelZero);
  EXPECT_EQ(Content(g_buffer, 2), (Bytes{0x00, 0x00})) << "the mode byte, mirrored";
}

TEST_F(DecodeRaw, ModeZeroMirrorsTheModeByteOnly) {
  g_buffer[0] = 0xEE;
  const Owned data = Process(0x01, {0x00, 0x11}, 1);
  EXPECT_EQ(g_buffer[0], 0x00);
}

TEST_F(DecodeRaw, ModeZeroWithoutBytesReadsItsModeByte) {
  const Owned data = Process(0x00, {0x00}, 0);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 1), (Bytes{0x00}));
  EXPECT_EQ(g_pos, 1u);
}

TEST_F(DecodeRaw, OnlyF2MeansNoModeByte) {
  for (const int compress : {0x00, 0x01, 0x02, 0xF1, 0xF3, 0xFF}) {
    const Owned data = Process(static_cast<uint8_t>(compress), {0x00, 0x42}, 1);
    ASSERT_NE(data, nullptr) << compress;
    EXPECT_EQ(data.get()[0], 0x42) << compress;
    EXPECT_EQ(g_pos, 2u) << compress;
  }
}

TEST_F(DecodeRaw, ModeByteChoosesTheDecoder) {
  EXPECT_EQ(Content(Process(0, {1, 0xFF, 0xFF, 0x02}, 3), 3), (Bytes{0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(Content(Process(0, {2, 0x02, 0xAB}, 3), 3), (Bytes{0xAB, 0xAB, 0xAB}));
  EXPECT_EQ(Content(Process(0, {3, 0x77, 0x00}, 3), 3), (Bytes{0x77, 0x77, 0x77}));
  EXPECT_EQ(Content(Process(0, {4, 0x00, 0x41, 0xFF, 0xFE, 0x03}, 3), 3),
            (Bytes{0x41, 0x41, 0x41}));
}

TEST_F(DecodeRaw, EveryOtherModeIsReportedAndReadsNothingElse) {
  for (int mode = 5; mode <= 255; ++mode) {
    shim::ClearMessages();
    const Owned data = Process(0x00, {static_cast<uint8_t>(mode), 0x11}, 1);
    EXPECT_EQ(data, nullptr) << mode;
    EXPECT_EQ(g_pos, 1u) << mode;
    EXPECT_EQ(g_buffer[0], mode);
    EXPECT_EQ(shim::Messages(), session::Messages{session::BadMode()}) << mode;
  }
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(DecodeRaw, CountIsWidenedWithoutSign) {
  // As a signed number this would be a small negative one.
  EXPECT_EQ(Process(0x00, {1, 0xFF}, 0xFFFFFFFE), nullptr);
  EXPECT_EQ(Process(0x00, {3, 0xFF}, 0xFFFFFFFE), nullptr);
  EXPECT_EQ(g_pos, 1u) << "memory is asked for before anything of the block is read";
}

TEST_F(DecodeRaw, LargestCountThatCanBeAllocated) {
  const u32 count = (4u << 20) - 1;
  const Owned data = Process(0xF2, Bytes(count, 0x5A), count);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data.get()[count - 1], 0x5A);
  EXPECT_EQ(data.get()[count], 0);
  ExpectAllocation(4u << 20, shim::kGfpKernelZero);
}

TEST_F(DecodeRaw, TooLargeACountIsNotAskedFor) {
  EXPECT_EQ(Process(0xF2, {0x01}, 4u << 20), nullptr);
  EXPECT_EQ(Process(0xF2, {0x01}, 0xFFFFFFFF), nullptr);
  EXPECT_EQ(Process(0x00, {0x00}, 0xFFFFFFFF), nullptr);
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(DecodeRaw, RawPathWithoutMemoryGivesNull) {
  shim::FailAllocation(1);
  EXPECT_EQ(Process(0xF2, {0x01, 0x02}, 2), nullptr);
  shim::FailAllocation(1);
  EXPECT_EQ(Process(0x00, {0x00, 0x02}, 1), nullptr);
  EXPECT_TRUE(shim::Messages().empty());
}

}  // namespace
