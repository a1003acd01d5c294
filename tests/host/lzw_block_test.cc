// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// LZW blocks of a command file: Quorlan_LzwDecode and its two callbacks.
#include "lzw_codes.h"
#include "session.h"

namespace {

using image::Bytes;
using session::Content;
using session::Owned;
using shim::kFill;

class LzwBlock : public session::SessionTest {
 protected:
  Owned Decode(const Bytes &stream, s64 count) {
    Load(stream);
    return Owned(Quorlan_LzwDecode(count));
  }
};

TEST_F(LzwBlock, BufferIsOneByteLongerAndThatByteIsNotSet) {
  const Owned data = Decode({0x00, 0x41, 0xFF, 0xFE, 0x03, 0x77}, 3);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 4), (Bytes{0x41, 0x41, 0x41, kFill}));
  EXPECT_EQ(g_pos, 5u);
  EXPECT_EQ(g_pWriteBuffer, data.get());
  EXPECT_EQ(g_iWriteCount, 3);
  ASSERT_EQ(shim::Allocations().size(), 4u);
  EXPECT_EQ(shim::Allocations()[0].size, 4u) << "the output, before the tables";
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(shim::LiveRequests(), 1u);
}

TEST_F(LzwBlock, ShortStreamLeavesTheRestUnwritten) {
  const Owned data = Decode({0x00, 0x41, 0xFF, 0x01}, 4);
  EXPECT_EQ(Content(data, 5), (Bytes{0x41, kFill, kFill, kFill, kFill}));
  EXPECT_EQ(g_iWriteCount, 1);
}

TEST_F(LzwBlock, OneByteMoreThanCountIsWritten) {
  const Owned data = Decode({0x00, 0x41, 0xFF, 0xFE, 0x03}, 2);
  EXPECT_EQ(Content(data, 3), (Bytes{0x41, 0x41, 0x41}));
  EXPECT_EQ(g_iWriteCount, 3);
}

TEST_F(LzwBlock, FurtherBytesAreDroppedAndTheStreamIsReadToItsEnd) {
  const Bytes stream = {0x00, 0x41, 0x42, 0xFE, 0xFF, 0xFD, 0x07, 0x99};
  const Owned data = Decode(stream, 3);
  EXPECT_EQ(Content(data, 4), (Bytes{0x41, 0x42, 0x41, 0x42}));
  EXPECT_EQ(g_pos, 7u);
  EXPECT_EQ(g_iWriteCount, 4);
}

TEST_F(LzwBlock, CountOfNothingHasRoomForOneByte) {
  const Owned data = Decode({0x00, 0x41, 0xFF, 0xFE, 0x03}, 0);
  EXPECT_EQ(Content(data, 1), (Bytes{0x41}));
  EXPECT_EQ(g_pos, 5u);
}

TEST_F(LzwBlock, BadParameterGivesAnUnwrittenBuffer) {
  const Owned data = Decode({0x04, 0x41}, 2);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(Content(data, 3), (Bytes{kFill, kFill, kFill}));
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(g_iWriteCount, 0);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(LzwBlock, WithoutTablesTheBufferIsUnwritten) {
  for (uint64_t n = 2; n <= 4; ++n) {
    shim::FailAllocation(n);
    const Owned data = Decode({0x00, 0x41, 0xFF, 0x01}, 1);
    ASSERT_NE(data, nullptr) << n;
    EXPECT_EQ(Content(data, 2), (Bytes{kFill, kFill})) << n;
    EXPECT_EQ(g_pos, 1u) << n;
    EXPECT_EQ(shim::LiveRequests(), 1u) << n;
  }
  EXPECT_EQ(shim::FreesOfNull(), 0u) << "only what was had is freed";
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(LzwBlock, WithoutMemoryForTheOutputNothingIsRead) {
  g_iWriteCount = 77;
  shim::FailAllocation(1);
  EXPECT_EQ(Decode({0x00, 0x41, 0xFF, 0x01}, 1), nullptr);
  EXPECT_EQ(g_pWriteBuffer, nullptr);
  EXPECT_EQ(g_iWriteCount, 77) << "not reached";
  EXPECT_EQ(g_pos, 0u);
  EXPECT_EQ(shim::Allocations().size(), 1u);
}

TEST_F(LzwBlock, CountThatCannotBeAllocatedIsNotAskedFor) {
  EXPECT_EQ(Decode({0x00, 0x41, 0xFF, 0x01}, 0xFFFFFFFF), nullptr);
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(LzwBlock, ThroughTheModeByte) {
  g_compress = 1;
  Load({0x04, 0x00, 0x41, 0xFF, 0x01});
  const Owned data(Quorlan_ProcessData(1));
  EXPECT_EQ(Content(data, 2), (Bytes{0x41, kFill}));
  EXPECT_EQ(g_pos, 5u);
}

TEST_F(LzwBlock, EachByteIsMirrored) {
  const Owned data = Decode({0x00, 0x41, 0xFF, 0x01}, 1);
  EXPECT_EQ(Content(g_buffer, 2), (Bytes{0x01, 0x00}));
}

TEST_F(LzwBlock, LargeBlocksOfEverySize) {
  for (uint32_t k = 0; k < 4; ++k) {
    lzw::Stream stream(k);
    lzw::Model model(k);
    for (uint32_t i = 0; i < 6000; ++i) {
      const uint32_t code = i % 3 == 0 ? model.next() - 1 : i * 31 % 256;
      const uint32_t usable = code == lzw::kClear ? 'w' : code;
      stream.Put(usable);
      model.Put(usable);
    }
    const size_t count = model.output().size();
    const Owned data = Decode(stream.End(), static_cast<s64>(count));
    ASSERT_NE(data, nullptr);
    EXPECT_TRUE(Content(data, count) == model.output()) << k;
    EXPECT_EQ(data.get()[count], kFill);
  }
}

// The write callback by itself knows no bound.
TEST_F(LzwBlock, WriteByteAloneIsUnbounded) {
  u8 *room = static_cast<u8 *>(shim::NewBlock(8));
  g_pWriteBuffer = room;
  g_iWriteCount = 5;
  Quorlan_WriteBufferByte(0x1241);
  Quorlan_WriteBufferByte(0xFFFFFF42);
  EXPECT_EQ(Content(room, 8), (Bytes{kFill, kFill, kFill, kFill, kFill, 0x41, 0x42, kFill}));
  EXPECT_EQ(g_iWriteCount, 7);
  g_pWriteBuffer = nullptr;
  kfree(room);
}

TEST_F(LzwBlock, BoundIsLiftedAfterADecode) {
  Decode({0x00, 0x41, 0xFF, 0x01}, 0);
  u8 *room = static_cast<u8 *>(shim::NewBlock(4));
  g_pWriteBuffer = room;
  g_iWriteCount = 3;
  Quorlan_WriteBufferByte(0x41);
  EXPECT_EQ(room[3], 0x41);
  EXPECT_EQ(g_iWriteCount, 4);
  g_pWriteBuffer = nullptr;
  kfree(room);
}

TEST_F(LzwBlock, BoundIsLiftedAfterADecodeThatFailed) {
  Decode({0x04}, 0);
  shim::FailAllocation(1);
  Decode({0x00, 0x41, 0xFF, 0x01}, 0);
  u8 *room = static_cast<u8 *>(shim::NewBlock(4));
  g_pWriteBuffer = room;
  g_iWriteCount = 3;
  Quorlan_WriteBufferByte(0x41);
  EXPECT_EQ(room[3], 0x41);
  g_pWriteBuffer = nullptr;
  kfree(room);
}

}  // namespace
