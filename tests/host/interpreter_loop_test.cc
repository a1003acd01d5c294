// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The main loop: where it begins, where it ends, and what it does not know.
#include "session.h"

namespace {

using image::Bytes;
using image::Frequency;
using image::Join;
using image::kReserved;
using image::Nothing;
using image::RecordOfLength;
using session::Done;
using session::Messages;

class InterpreterLoop : public session::SessionTest {};

TEST_F(InterpreterLoop, StartAtTheLengthReadsNoByte) {
  Load({});
  g_buffer[0] = 0xEE;
  g_cfg_start_pos = 0;
  g_pos = 77;
  EXPECT_EQ(Quorlan_ProcessCmd(0), 0);
  EXPECT_EQ(g_pos, 0u);
  EXPECT_EQ(g_buffer[0], 0xEE);
  EXPECT_EQ(shim::Messages(), Messages{Done(0)});
}

TEST_F(InterpreterLoop, StartPastTheLengthReadsNoByte) {
  Load({});
  g_cfg_start_pos = 5;
  EXPECT_EQ(Quorlan_ProcessCmd(3), 0);
  EXPECT_EQ(shim::Messages(), Messages{Done(5)});
}

TEST_F(InterpreterLoop, LengthIsComparedAsSigned) {
  Load({});
  g_cfg_start_pos = 0;
  EXPECT_EQ(Quorlan_ProcessCmd(0xFFFFFFFFFFFFFFFF), 0);
  EXPECT_EQ(shim::Messages(), Messages{Done(0)});
}

TEST_F(InterpreterLoop, EndMessageHasTheLow32BitsOfThePosition) {
  Load({});
  g_cfg_start_pos = 0x100000005;
  EXPECT_EQ(Quorlan_ProcessCmd(0x100000005), 0);
  EXPECT_EQ(shim::Messages(), Messages{Done(5)});
}

TEST_F(InterpreterLoop, BeginsAtTheFirstRecord) {
  Load(Join({{'x', 'x', 'x'}, Frequency(500)}));
  g_cfg_start_pos = 3;
  g_pos = 1;
  EXPECT_EQ(Quorlan_ProcessCmd(8), 0);
  EXPECT_EQ(g_freq, 500u);
  EXPECT_EQ(shim::Messages(), Messages{Done(8)});
}

TEST_F(InterpreterLoop, OtherByteThanAMarkEndsTheFileWell) {
  for (const int byte : {0x00, 0x17, 0x24, 0x5D, 0x5F, 0xFF}) {
    shim::ClearMessages();
    EXPECT_EQ(Play(Join({{static_cast<uint8_t>(byte)}, Frequency(500)})), 0);
    EXPECT_EQ(g_freq, 0u);
    EXPECT_EQ(shim::Messages(), Messages{Done(1)}) << "the byte is read";
  }
}

TEST_F(InterpreterLoop, LengthBoundsOnlyWhereARecordMayStart) {
  // The image goes on behind the length that is given.
  Load(Join({Frequency(500), Frequency(400), Frequency(300)}));
  g_cfg_start_pos = 0;
  EXPECT_EQ(Quorlan_ProcessCmd(6), 0);
  EXPECT_EQ(g_freq, 400u) << "a record that begins inside is played whole";
  EXPECT_EQ(shim::Messages(), Messages{Done(10)});
}

TEST_F(InterpreterLoop, ClearedRunFlagStopsAtTheNextRecord) {
  g_hdr_data = static_cast<u8 *>(shim::NewBlock(4));
  g_vector = shim::NewString("*");
  g_status = 0;
  EXPECT_EQ(Play(Frequency(500)), -17);
  EXPECT_EQ(g_pos, 1u) << "just behind the mark";
  EXPECT_EQ(g_freq, 0u);
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_TRUE(shim::IsLive(g_hdr_data)) << "nothing is released";
  EXPECT_TRUE(shim::IsLive(g_vector));
}

TEST_F(InterpreterLoop, ClearedRunFlagIsNotSeenWithoutAFurtherRecord) {
  g_status = 0;
  EXPECT_EQ(Play({}), 0);
  EXPECT_EQ(Play({'x'}), 0) << "the mark is tested first";
}

TEST_F(InterpreterLoop, OnlyZeroInTheRunFlagStops) {
  g_status = 2;
  EXPECT_EQ(Play(Frequency(500)), 0);
  EXPECT_EQ(g_freq, 500u);
}

TEST_F(InterpreterLoop, UnknownOpcodes) {
  for (int opcode = 0; opcode < 256; ++opcode) {
    const bool known = opcode == 1 || (opcode >= 4 && opcode <= 7) ||
                       (opcode >= 9 && opcode <= 14) || opcode == 19 || opcode == '$' ||
                       opcode == '%';
    if (known) {
      continue;
    }
    shim::ClearMessages();
    EXPECT_EQ(Play(Join({image::Record(static_cast<uint8_t>(opcode), {}), Nothing()})), -10)
        << opcode;
    EXPECT_EQ(shim::Messages(), Messages{session::UnknownOpcode()}) << opcode;
    EXPECT_EQ(g_pos, 3u) << opcode;
  }
}

TEST_F(InterpreterLoop, UnknownOpcodeReleasesNothing) {
  g_tir_data = static_cast<u8 *>(shim::NewBlock(4));
  EXPECT_EQ(Play(image::Record(2, {})), -10);
  EXPECT_TRUE(shim::IsLive(g_tir_data));
}

TEST_F(InterpreterLoop, ReservedRecordsAreSkippedByTheirLength) {
  for (const int opcode : {1, 5, 6, 19}) {
    shim::ClearMessages();
    g_freq = 0;
    const Bytes reserved = image::Record(static_cast<uint8_t>(opcode), {'^', 0x17, 0x00, 0xFF});
    EXPECT_EQ(Play(Join({reserved, Frequency(500)})), 0) << opcode;
    EXPECT_EQ(g_freq, 500u) << opcode;
    EXPECT_EQ(shim::Messages(), Messages{Done(12)}) << opcode;
  }
  EXPECT_EQ(pins_.writes(), 0u);
}

TEST_F(InterpreterLoop, LengthsOfUpTo7BitsEndAtTheOpcode) {
  for (uint8_t length = 0; length < 8; ++length) {
    shim::ClearMessages();
    EXPECT_EQ(Play(RecordOfLength({length}, kReserved, {'^', '^'})), 0);
    EXPECT_EQ(shim::Messages(), Messages{Done(3)}) << "the opcode is read as a mark";
  }
}

TEST_F(InterpreterLoop, LengthIsDividedTruncating) {
  for (const int length : {8, 9, 15}) {
    g_freq = 0;
    EXPECT_EQ(
        Play(Join({RecordOfLength({static_cast<uint8_t>(length)}, kReserved, {}), Frequency(500)})),
        0);
    EXPECT_EQ(g_freq, 500u) << length;
  }
}

TEST_F(InterpreterLoop, SkipPastTheLengthEndsTheFileThere) {
  EXPECT_EQ(Play(RecordOfLength({80}, 5, {1, 2})), 0);
  EXPECT_EQ(shim::Messages(), Messages{Done(12)});
}

TEST_F(InterpreterLoop, NegativeLengthEndsAReservedRecordAtOrBeforeItsOpcode) {
  // The opcode is at index 11; what is there and before it, in the length, is no mark.
  for (const int opcode : {1, 5, 6, 19}) {
    const struct {
      s32 length;
      uint32_t end;
    } table[] = {{-1, 12}, {-7, 12}, {-8, 11}, {-15, 11}, {-16, 10}, {-40, 7}};
    for (const auto &row : table) {
      shim::ClearMessages();
      const Bytes record =
          RecordOfLength(image::Negative(row.length), static_cast<uint8_t>(opcode), {});
      EXPECT_EQ(Play(Join({Frequency(500), record, Frequency(400)})), 0) << row.length;
      EXPECT_EQ(shim::Messages(), Messages{Done(row.end)}) << opcode << ' ' << row.length;
      EXPECT_EQ(g_freq, 500u);
    }
  }
}

TEST_F(InterpreterLoop, NegativeLengthThatLeadsBackToAMarkIsMalformed) {
  // The record's own mark and the one before it; for ever, if they were played.
  for (const s32 length : {-48, -55, -88, -95}) {
    shim::ClearMessages();
    EXPECT_EQ(
        Play(Join({Frequency(500), RecordOfLength(image::Negative(length), kReserved, {}), {0}})),
        -10)
        << length;
    EXPECT_EQ(shim::Messages(), Messages{session::Cut()}) << length;
    EXPECT_EQ(g_pos, 12u);
  }
}

TEST_F(InterpreterLoop, NegativeLengthThatLeavesTheImageIsMalformed) {
  const struct {
    s32 length;
    s32 rc;
  } table[] = {{-96, 0}, {-103, 0}, {-104, -10}, {-112, -10}, {INT32_MIN, -10}};
  for (const auto &row : table) {
    // Index 0 is no mark here: the first record is at 6.
    Load(Join({{0, 0, 0, 0, 0, 0}, RecordOfLength(image::Negative(row.length), kReserved, {})}));
    g_cfg_start_pos = 6;
    EXPECT_EQ(Quorlan_ProcessCmd(13), row.rc) << row.length;
  }
}

TEST_F(InterpreterLoop, NegativeLengthThatEndsInItsOwnLengthMayGoOn) {
  // -8 in six groups, the last byte of which is a mark behind the record's own.
  const Bytes length = {0x88, 0xFA, 0xFF, 0xFF, 0x8F, '^'};
  EXPECT_EQ(Play(Join({{'^'}, length, {kReserved, 7, 5}})), 0);
  EXPECT_EQ(g_freq, 5u) << "the opcode was read as a length, and a record of frequency followed";
  EXPECT_EQ(shim::Messages(), Messages{Done(10)});
}

TEST_F(InterpreterLoop, NegativeLengthElsewhereIsNotUsed) {
  const Bytes length = image::Negative(-8);
  EXPECT_EQ(
      Play(Join(
          {RecordOfLength(length, image::kFrequency, image::Number(500)),
           RecordOfLength(length, image::kEndLoop, {}), RecordOfLength(length, image::kLoop, {2}),
           RecordOfLength(length, image::kHdr, {0}), RecordOfLength(length, image::kRunTest, {1}),
           RecordOfLength(length, image::kSir, {0, 23})})),
      0);
  EXPECT_EQ(g_freq, 500u);
}

TEST_F(InterpreterLoop, MarkLengthAndOpcodeAreMirrored) {
  g_buffer[1] = 0xEE;
  EXPECT_EQ(Play({'^', 0x08, 0x02}), -10);
  EXPECT_EQ(session::Content(g_buffer, 2), (Bytes{0x02, 0x00}));
}

}  // namespace
