// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Records that the end of the image cuts: neither shifted nor stored, and reported. The image is
// guarded, so that a touch of the byte behind it faults.
#include "session.h"

namespace {

using image::Bytes;
using image::Field;
using image::Header;
using image::Join;
using image::kHir;
using image::kRaw;
using image::kSdr;
using image::kSir;
using image::kTagMask;
using image::kTagTdi;
using image::kTagTdo;
using image::Nothing;
using image::Record;
using image::RecordOfLength;
using session::Done;
using session::Messages;

class BoundsRecord : public session::SessionTest {
 protected:
  // Downloads records behind a header and a record that keeps the pre-scan away from them.
  s32 Play(const Bytes &records, uint8_t compress = kRaw) {
    shim::ClearMessages();
    watch_.Clear();
    // A stopped download leaves its IDCODE string, which the next one would drop.
    kfree(g_chip_idcode);
    g_chip_idcode = nullptr;
    const Bytes file = Join({Header(compress), Nothing(), records});
    size_ = static_cast<uint32_t>(file.size());
    return Download(file);
  }

  // What a download says between its IDCODE and its end.
  Messages Said() const {
    const Messages &all = shim::Messages();
    return all.size() < 7 ? Messages{} : Messages(all.begin() + 6, all.end() - 1);
  }

  // The records end inside one: they fail as malformed and move nothing.
  void ExpectCut(const Bytes &records, const Messages &said, uint8_t compress = kRaw) {
    SCOPED_TRACE(::testing::PrintToString(records));
    EXPECT_EQ(Play(records, compress), 0);
    EXPECT_EQ(Said(), said);
    EXPECT_EQ(shim::Messages().back(), session::Ended(-10));
    EXPECT_EQ(watch_.Text(), session::Opening());
  }

  // The same for each proper prefix of one record, from its second byte on.
  void ExpectEveryCut(const Bytes &record, const Messages &said, uint8_t compress = kRaw) {
    for (size_t length = 3; length < record.size(); ++length) {
      ExpectCut(Bytes(record.begin(), record.begin() + static_cast<long>(length)), said, compress);
    }
  }

  uint32_t size_ = 0;
};

TEST_F(BoundsRecord, FileOfAHeaderAlone) {
  EXPECT_EQ(Download(Header()), 1);
  EXPECT_EQ(shim::Messages(), session::Join({{session::Started(16)},
                                             session::Idcode("00000000"),
                                             {Done(16), session::Ended(0)}}));
}

TEST_F(BoundsRecord, MarkLengthAndOpcode) {
  for (const Bytes &start : {Bytes{'^'}, Bytes{'^', 8}, Bytes{'^', 0x88}, Bytes{'^', 0x88, 0x80}}) {
    ExpectCut(start, {session::Cut()});
  }
}

TEST_F(BoundsRecord, LengthThatWouldSelectAnOpcodeBehindTheEnd) {
  // A byte behind the end reads as 0, which is no opcode: but the record is cut, not unknown.
  ExpectCut({'^', 8}, {session::Cut()});
  ExpectCut({'^'}, {session::Cut()});
}

TEST_F(BoundsRecord, Frequency) {
  g_freq = 0;
  ExpectEveryCut(image::Frequency(2000000), {session::Cut()});
  EXPECT_EQ(g_freq, 0u) << "not stored";
}

TEST_F(BoundsRecord, LoopCount) {
  ExpectEveryCut(image::Loop(1000), {session::Cut()});
}

TEST_F(BoundsRecord, EndLoopAndReservedAreWholeWithTheirOpcode) {
  EXPECT_EQ(Play(image::EndLoop()), 1);
  EXPECT_EQ(Play(Nothing()), 1);
}

TEST_F(BoundsRecord, ReservedRecordPastTheEndEndsTheFile) {
  EXPECT_EQ(Play(RecordOfLength(image::Number(8000), 5, {1, 2})), 1);
  EXPECT_EQ(Said(), Messages{Done(19 + 3 + 1000)});
}

TEST_F(BoundsRecord, NegativeLengthThatLeadsBackToAMarkIsMalformed) {
  ExpectCut(Join({RecordOfLength(image::Negative(-72), 19, {}), Nothing()}), {session::Cut()});
}

TEST_F(BoundsRecord, Shift) {
  const Messages said = {session::Cut(), session::ShiftFailed()};
  ExpectEveryCut(image::Sdr(12, {0x12, 0x34}, {0x00, 0x00}, {0xFF, 0xF0}), said);
  ExpectEveryCut(image::Sir(8, {0x12}), said);
  ExpectEveryCut(Record(kSdr, {8, 23}), said);
  ExpectEveryCut(Record(kSir, Join({image::Number(300), {23}})), said);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(BoundsRecord, ShiftOfEveryMode) {
  const Messages said = {session::Cut(), session::ShiftFailed()};
  for (const Bytes &block : {Bytes{0, 0x12, 0x34, 0x56}, Bytes{1, 0xFF, 0x12, 0xFF, 0x81, 0x00},
                             Bytes{2, 0x83, 0x00, 0x12, 0x30}, Bytes{3, 0x00, 0x6A, 0x80},
                             Bytes{4, 0, 0x41, 0xFF, 0xFE, 0x03}}) {
    ExpectEveryCut(image::Shift(kSdr, 24, Field(kTagTdi, block)), said, 0);
  }
}

TEST_F(BoundsRecord, BlocksOfACutShiftAreFreed) {
  ExpectCut({'^', 80, kSdr, 8, kTagTdi, 1, kTagTdo, 2, kTagMask, 3},
            {session::Cut(), session::ShiftFailed()});
}

TEST_F(BoundsRecord, UnknownModeBehindTheEndIsNoMode) {
  // The mode byte is cut off: it reads as 0, raw, and nothing is said of a mode.
  ExpectCut({'^', 80, kSdr, 8, kTagTdi}, {session::Cut(), session::ShiftFailed()}, 0);
}

TEST_F(BoundsRecord, BadTagInsideTheImageIsABadTag) {
  EXPECT_EQ(Play({'^', 80, kSdr, 8, 18}), 0);
  EXPECT_EQ(Said(), (Messages{session::BadTag(), session::ShiftFailed()}));
}

TEST_F(BoundsRecord, HugeRawBlock) {
  // 2^28 bytes are claimed; the position goes far past the end.
  ExpectCut(Join({{'^', 80, kSdr}, image::Number(0x7FFFFFF8), {kTagTdi, 0x11, 23}}),
            {session::Cut(), session::ShiftFailed()});
}

TEST_F(BoundsRecord, LargestRawBlockOfAShortFile) {
  ExpectCut(Join({{'^', 80, kSdr}, image::Number(8 * ((4u << 20) - 1)), {kTagTdi, 0x11, 23}}),
            {session::Cut(), session::ShiftFailed()});
}

TEST_F(BoundsRecord, LzwStreamEndsWithTheImage) {
  // Literals without an end code.
  ExpectCut(Join({{'^', 80, kSdr, 8, kTagTdi, 4, 0}, Bytes(40, 0x41)}),
            {session::Cut(), session::ShiftFailed()}, 0);
  ExpectCut({'^', 80, kSdr, 8, kTagTdi, 4}, {session::Cut(), session::ShiftFailed()}, 0);
}

TEST_F(BoundsRecord, Pad) {
  const Messages said = {session::Cut(), session::PadFailed()};
  for (const uint8_t opcode : {9, 10, 11, 12}) {
    ExpectEveryCut(image::Pad(opcode, 12, {0x12, 0x34}), said);
    ExpectCut({'^', 16, opcode, 8, 16}, said);
    ExpectCut({'^', 16, opcode, 8}, said);
  }
  EXPECT_EQ(g_tdr_len + g_tir_len + g_hdr_len + g_hir_len, 0u) << "not stored";
  EXPECT_EQ(g_tdr_data, nullptr);
  EXPECT_EQ(g_hir_data, nullptr);
  EXPECT_EQ(g_hir_vector, nullptr);
}

TEST_F(BoundsRecord, CutPadLeavesTheEarlierRegister) {
  ExpectCut(Join({image::Pad(kHir, 8, {0x55}), {'^', 48, kHir, 16, 15, 0x11, 0x22}}),
            {session::Cut(), session::PadFailed()});
  EXPECT_EQ(g_hir_len, 8u);
  ASSERT_NE(g_hir_data, nullptr);
  EXPECT_EQ(g_hir_data[0], 0x55);
  EXPECT_EQ(session::Characters(g_hir_vector).size(), 8u);
}

TEST_F(BoundsRecord, PadLengthCutOff) {
  ExpectCut({'^', 16, kHir}, {session::Cut(), session::PadFailed()});
  ExpectCut({'^', 16, kHir, 0x80}, {session::Cut(), session::PadFailed()});
}

TEST_F(BoundsRecord, RunTestWithoutItsGate) {
  ExpectCut({'^', 32, 4}, {session::Cut()});
  ExpectCut({'^', 16, 4}, {session::Cut()});
}

TEST_F(BoundsRecord, RunTestWithoutItsFirstField) {
  for (const uint8_t length : {24, 32, 48, 0x5E}) {
    ExpectCut({'^', length, 4, 1}, {session::Cut()});
  }
  // With its end, or the next record's mark, it is whole and makes no clock.
  EXPECT_EQ(Play({'^', 24, 4, 1, 23}), 1);
  EXPECT_EQ(Play(Join({{'^', 24, 4, 1}, Nothing()})), 1);
  EXPECT_EQ(watch_.Text(), session::Opening());
}

TEST_F(BoundsRecord, RunTestInTheMiddleOfAField) {
  for (const Bytes &fields : {Bytes{20}, Bytes{24}, Bytes{20, 0x8C}, Bytes{24, 0xFF, 0x80},
                              Bytes{20, 12, 24}, Bytes{19, 20, 12, 20, 0x80}}) {
    ExpectCut(Join({{'^', 32, 4, 1}, fields}), {session::Cut()});
  }
}

TEST_F(BoundsRecord, RunTestMayLookAtTheByteBehindIt) {
  EXPECT_EQ(Play(Record(4, {1, 20, 12})), 1);
  EXPECT_EQ(watch_.Text(), session::Opening() + ", idle 2");
  EXPECT_EQ(Said(), Messages{Done(size_ + 1)}) << "the byte behind was read as 0";
  EXPECT_EQ(Play(Record(4, {1, 24, 13})), 1);
  EXPECT_EQ(watch_.Text(), session::Opening() + ", idle 3");
  EXPECT_EQ(Play(Record(4, {1, 20, 12, 19})), 1);
}

TEST_F(BoundsRecord, RunTestOfItsGateAloneLooksAtNothing) {
  EXPECT_EQ(Play(Record(4, {1})), 1);
  EXPECT_EQ(Said(), Messages{Done(size_)});
}

TEST_F(BoundsRecord, EarlierRecordsArePlayed) {
  EXPECT_EQ(Play(Join({image::Sdr(4, {0x90}), image::RunCycles(3), {'^', 24, 7}})), 0);
  EXPECT_EQ(watch_.Text(), session::Opening() + ", DR 1001, idle 3");
  EXPECT_EQ(Said(), Messages{session::Cut()});
}

TEST_F(BoundsRecord, FailedVerificationComesBeforeACutRecord) {
  EXPECT_EQ(Play(Join({image::Sdr(1, {0}, {0x80}, {0x80}), {'^'}})), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-17));
}

TEST_F(BoundsRecord, NothingIsReleasedByACut) {
  ExpectCut(Join({image::Pad(image::kTdr, 8, {0x55}), {'^', 8}}), {session::Cut()});
  EXPECT_NE(g_tdr_data, nullptr);
  EXPECT_NE(g_vector, nullptr);
  EXPECT_NE(g_chip_idcode, nullptr);
}

}  // namespace
