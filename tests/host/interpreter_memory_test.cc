// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Shifts that memory is wanting for: they are abandoned, and the download ends with -2.
#include "session.h"

namespace {

using image::Bytes;
using image::Field;
using image::Join;
using image::kSdr;
using image::kSir;
using image::kTagMask;
using image::kTagTdi;
using image::kTagTdo;
using image::Nothing;
using image::Sdr;
using image::Shift;
using session::Done;
using session::Messages;

class InterpreterMemory : public session::SessionTest {
 protected:
  // Plays `record` with its n-th allocation failing, once as the last record of the file and once
  // followed by another; nothing may be shifted.
  void ExpectAbandoned(const Bytes &record, uint64_t n, const Messages &said) {
    for (const Bytes &tail : {Bytes{}, Nothing()}) {
      g_status = 1;
      shim::ClearMessages();
      shim::FailAllocation(n);
      EXPECT_EQ(Play(Join({record, tail})), -2) << "allocation " << n;
      EXPECT_EQ(g_status, 0u);
      EXPECT_EQ(pins_.writes(), 0u);
      const Messages done = {Done(static_cast<uint32_t>(record.size()))};
      EXPECT_EQ(shim::Messages(), tail.empty() ? session::Join({said, done}) : said);
      shim::FailAllocation(0);
    }
  }

  // A data shift of one block in the given mode.
  Bytes Block(const Bytes &block) {
    g_compress = 0;
    return Shift(kSdr, 24, Field(kTagTdi, block));
  }

  static shim::Message NoVector(uint32_t size) {
    return shim::Printk("Error: malloc/realloc failed, size " + std::to_string(size) + "\n");
  }
};

TEST_F(InterpreterMemory, EachBlockOfAShift) {
  const Bytes fields =
      Join({Field(kTagTdi, {0x11}), Field(kTagTdo, {0x22}), Field(kTagMask, {0x00})});
  for (uint64_t n = 1; n <= 3; ++n) {
    ExpectAbandoned(Shift(kSdr, 8, fields), n, {});
    ExpectAbandoned(Shift(kSir, 8, fields), n, {});
  }
}

TEST_F(InterpreterMemory, BlocksOfEveryMode) {
  // Only a raw block is passed over; of the others nothing is read behind the mode byte (and the
  // pattern's length), so these blocks hold nothing more.
  ExpectAbandoned(Block({0, 0x12, 0x34, 0x56}), 1, {});
  for (const uint8_t mode : {1, 2, 3, 4}) {
    ExpectAbandoned(Block({mode}), 1, {});
  }
  ExpectAbandoned(Block({2, 0x01}), 2, {shim::Printk("nibble decode: calloc fail")});
}

TEST_F(InterpreterMemory, RestOfABlockIsReadAsTags) {
  for (const Bytes &block : {Bytes{1, 0xFF, 0x12, 0xFF, 0x01}, Bytes{2, 0x01, 0xA0},
                             Bytes{3, 0x00, 0x6A, 0x80}, Bytes{4, 0, 0x41, 0xFF, 0xFE, 0x03}}) {
    g_status = 1;
    shim::ClearMessages();
    shim::FailAllocation(1);
    EXPECT_EQ(Play(Join({Block(block), Nothing()})), -10);
    EXPECT_EQ(shim::Messages(), (Messages{session::BadTag(), session::ShiftFailed()}));
  }
  EXPECT_EQ(pins_.writes(), 0u);
}

TEST_F(InterpreterMemory, DoubledNibblePattern) {
  // Where the doubling fails, the old pattern leaks each time.
  const Bytes record = Block({2, 0x01, 0xA0});
  shim::FailAllocation(3);
  EXPECT_EQ(Play(record), -2);
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Printk("nibble decode: realloc fail"), Done(9)}));
  AllowLeaks(1);
}

TEST_F(InterpreterMemory, TablesOfAnLzwBlock) {
  // The stream behind its parameter is not read: its first byte is read as a tag.
  const Bytes record = Block({4, 0, 0x41, 0xFF, 0xFE, 0x03});
  for (uint64_t n = 2; n <= 4; ++n) {
    g_status = 1;
    shim::FailAllocation(n);
    EXPECT_EQ(Play(Join({record, Nothing()})), -10) << n;
    EXPECT_EQ(shim::LiveRequests(), n - 1) << "the block leaks, as before any bad tag";
  }
  EXPECT_EQ(pins_.writes(), 0u);
  AllowLeaks(3);
}

TEST_F(InterpreterMemory, TablesOfAnLzwBlockWhoseRecordEnds) {
  // There is a block, but nothing was decoded into it: shifting it would program anything.
  g_compress = 0;
  const Bytes record = Shift(kSdr, 24, Field(kTagTdi, {4, 0}));
  for (uint64_t n = 2; n <= 4; ++n) {
    ExpectAbandoned(record, n, {});
  }
}

TEST_F(InterpreterMemory, BlockThatCannotBeAllocatedIsNotAskedFor) {
  g_compress = 0;
  const Bytes fields = Join({Field(kTagTdi, {1}), {23}});
  for (const Bytes &bits : {image::Number(33554432), image::Number(0x7FFFFFFF)}) {
    g_status = 1;
    shim::ClearMessages();
    EXPECT_EQ(Play(image::Record(kSdr, Join({bits, fields}))), -2);
    EXPECT_EQ(pins_.writes(), 0u);
  }
  for (const shim::Allocation &allocation : shim::Allocations()) {
    EXPECT_LE(allocation.size, shim::kMaxBlock);
  }
}

TEST_F(InterpreterMemory, RecordIsReadToItsEnd) {
  shim::FailAllocation(1);
  EXPECT_EQ(Play(Sdr(8, {0x11}, {0x22}, {0xFF})), -2);
  EXPECT_EQ(shim::Messages(), Messages{Done(11)});
}

TEST_F(InterpreterMemory, BadTagBehindTheMissingBlockWins) {
  shim::FailAllocation(1);
  EXPECT_EQ(Play(Shift(kSdr, 8, Join({Field(kTagTdi, {0x11}), {18}}))), -10);
  EXPECT_EQ(shim::Messages(), (Messages{session::BadTag(), session::ShiftFailed()}));
}

TEST_F(InterpreterMemory, ReplacedBlockIsMissedAllTheSame) {
  shim::FailAllocation(1);
  const Bytes fields = Join({Field(kTagTdi, {0x11}), Field(kTagTdi, {0x22})});
  EXPECT_EQ(Play(Shift(kSdr, 8, fields)), -2);
  EXPECT_EQ(pins_.writes(), 0u);
}

TEST_F(InterpreterMemory, Vector) {
  ExpectAbandoned(Sdr(8, {0x11}), 2, {NoVector(3200)});
  ExpectAbandoned(image::Sir(8, {0x11}), 2, {NoVector(3200)});
  EXPECT_EQ(g_vector, nullptr);
}

TEST_F(InterpreterMemory, VectorThatCannotGrow) {
  // The first shift makes the buffer, the second does not fit.
  EXPECT_EQ(Play(Join({Sdr(8, {0x11}), image::Record(2, {})})), -10);
  ASSERT_NE(g_vector, nullptr);
  pins_.ClearEvents();
  watch_.Clear();
  shim::ClearMessages();
  shim::FailAllocation(2);
  EXPECT_EQ(Play(Sdr(4000, Bytes(500, 0xFF))), -2);
  EXPECT_EQ(watch_.Text(), "");
  EXPECT_TRUE(pins_.events().empty());
  EXPECT_EQ(g_vector_size, 4005u);
  EXPECT_EQ(shim::Messages(), (Messages{NoVector(4005), Done(508)}));
}

TEST_F(InterpreterMemory, VectorPastTheAllocatorsEnd) {
  EXPECT_EQ(Play(Join({Shift(kSdr, 5000000, {}), Nothing()})), -2);
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(g_status, 0u);
  for (const shim::Allocation &allocation : shim::Allocations()) {
    EXPECT_LE(allocation.size, shim::kMaxBlock);
  }
}

TEST_F(InterpreterMemory, ALengthWithoutAVectorTakesNoRoom) {
  // 4294967295 + 11 would be more than any block; a scan of 4294967295 bits is.
  g_hdr_len = 0xFFFFFFFF;
  EXPECT_EQ(Play(Join({Sdr(8, {0x11}), Nothing()})), 0);
  EXPECT_EQ(pins_.writes(), 26u + 9 + 6);
  EXPECT_EQ(Play(image::Record(kSdr, Join({image::Negative(-1), {23}}))), -2);
  EXPECT_EQ(pins_.writes(), 41u);
}

TEST_F(InterpreterMemory, LaterVerificationFailureIsToldApart) {
  shim::FailAllocation(1);
  EXPECT_EQ(Download(Join({image::Header(), Nothing()})), 0);
  shim::ClearMessages();
  EXPECT_EQ(Download(Join({image::Header(), Sdr(1, {0}, {0x80}, {0x80}), Nothing()})), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-17));
}

}  // namespace
