// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The IDCODE pre-scan: Quorlan_ReadChipIdcode. The board reads zeros unless a test says otherwise.
#include "session.h"

namespace {

using image::Bytes;
using image::Join;
using image::kHdr;
using image::kSir;
using image::kTdr;
using image::Pad;
using image::RecordOfLength;
using session::Messages;

class PrescanScan : public session::SessionTest {
 protected:
  // Scans records that begin at index 0; zeros follow them.
  void Scan(const Bytes &records) {
    shim::ClearMessages();
    watch_.Clear();
    Load(Join({records, Bytes(8, 0)}));
    EXPECT_EQ(Quorlan_ReadChipIdcode(), 0);
  }

  void ExpectChain(u32 level, u32 total) {
    EXPECT_EQ(g_cur_level, level);
    EXPECT_EQ(g_total_level, total);
  }

  const Messages zeros_ = session::Idcode("00000000");
};

TEST_F(PrescanScan, NoRecordIsAChainOfOne) {
  Scan({'x'});
  ExpectChain(1, 1);
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(watch_.Text(), "IR 01100000, DR " + std::string(32, '1'));
  EXPECT_EQ(shim::Messages(), zeros_);
}

TEST_F(PrescanScan, IdcodeIsReadAndLoggedMostSignificantByteFirst) {
  watch_.QueueTdo("");
  watch_.QueueTdo("10101100001100101000000001010000");
  Scan({'x'});
  EXPECT_EQ(shim::Messages(), session::Idcode("0a014c35"));
  ASSERT_NE(g_chip_idcode, nullptr);
  EXPECT_STREQ(reinterpret_cast<char *>(g_chip_idcode), "00001010000000010100110000110101");
}

TEST_F(PrescanScan, PositionIsNotReset) {
  Load({'^', 8, 1, 'x', 0});
  g_pos = 3;
  Quorlan_ReadChipIdcode();
  EXPECT_EQ(g_pos, 4u);
}

TEST_F(PrescanScan, SirInstructionBytesGiveTheChain) {
  Scan(image::Sir(24, {0xFF, 0x60, 0xFF}));
  ExpectChain(2, 3);
  EXPECT_EQ(watch_.Text(), "IR 111111110110000011111111, DR " + std::string(33, '1'));
  Scan(image::Sir(24, {0x60, 0xFF, 0xFF}));
  ExpectChain(3, 3);
  Scan(image::Sir(24, {0xFF, 0xFF, 0x60}));
  ExpectChain(1, 3);
  AllowLeaks(3 + 2);  // the blocks, and the IDCODE strings that were overwritten
}

TEST_F(PrescanScan, Instruction224IsUsedAtOnce) {
  Scan(image::Sir(8, {0x07}));
  EXPECT_EQ(g_idcode_pub, 224u);
  EXPECT_EQ(watch_.Text(), "IR 00000111, DR " + std::string(32, '1'));
  AllowLeaks(1);
}

TEST_F(PrescanScan, TrailerBitsAreDevicesBeforeTheTarget) {
  Scan(Pad(kTdr, 2, {0x00}));
  ExpectChain(3, 3);
}

TEST_F(PrescanScan, HeaderBitsAreDevicesBehindTheTarget) {
  Scan(Pad(kHdr, 2, {0x00}));
  ExpectChain(1, 3);
}

TEST_F(PrescanScan, ScanNormallyEndsAfterItsFirstRecord) {
  // The next record's mark is discarded, its length is no mark.
  Scan(Join({Pad(kTdr, 2, {0x00}), Pad(kHdr, 3, {0x00})}));
  ExpectChain(3, 3);
  EXPECT_EQ(g_pos, Pad(kTdr, 2, {0x00}).size() + 2);
}

TEST_F(PrescanScan, RecordBehindAStrayByteIsScanned) {
  Scan(Join({Pad(kTdr, 2, {0x00}), {0x99}, Pad(kHdr, 3, {0x00})}));
  ExpectChain(3, 6);
  Scan(Join({Pad(kHdr, 3, {0x00}),
             {0x99},
             Pad(kTdr, 1, {0x00}),
             {0x99},
             image::Sir(16, {0xFF, 0x60}),
             {0x99},
             Pad(kHdr, 7, {0x00})}));
  ExpectChain(2, 6);
  AllowLeaks(1 + 1);
}

TEST_F(PrescanScan, LaterRecordOfOneKindReplacesTheEarlier) {
  Scan(Join({Pad(kTdr, 2, {0x00}),
             {0x99},
             Pad(kTdr, 1, {0x00}),
             {0x99},
             Pad(kHdr, 5, {0x00}),
             {0x99},
             Pad(kHdr, 0)}));
  ExpectChain(2, 2);
}

TEST_F(PrescanScan, SirThatEndsTheScan) {
  Scan(Join({image::Sir(8, {0x60}), {0x99}, Pad(kTdr, 2, {0x00})}));
  ExpectChain(1, 1);
  AllowLeaks(1);
}

TEST_F(PrescanScan, SirOfBypassAloneDoesNotEndTheScan) {
  Scan(Join({image::Sir(16, {0xFF, 0xFF}), {0x99}, Pad(kTdr, 2, {0x00})}));
  ExpectChain(5, 5);
  AllowLeaks(1);
}

TEST_F(PrescanScan, SecondSirStartsItsCountersAnew) {
  Scan(Join({image::Sir(16, {0xFF, 0xFF}), {0x99}, image::Sir(16, {0xFF, 0x60})}));
  ExpectChain(1, 2);
  AllowLeaks(2);
}

TEST_F(PrescanScan, PadsOfNoBitsHaveNoData) {
  Scan(Join({Pad(kTdr, 0), {0x99}, Pad(kHdr, 0), {0x99}, Pad(kTdr, 4, {0x00})}));
  ExpectChain(5, 5);
}

TEST_F(PrescanScan, DataOfAPadIsReadUpToTheFirst23) {
  // A 23 in the data: the scan goes on right behind it, discards a byte and reads "^", a record.
  Scan(Join({RecordOfLength({8}, kTdr, {24, 15, 0x17, 0x99}), Pad(kHdr, 2, {0x00})}));
  ExpectChain(25, 27);
}

TEST_F(PrescanScan, OtherRecordsAreSkippedByTheirLength) {
  for (const int opcode : {0, 1, 4, 7, 8, 10, 12, 13, 15, 19, 0x24, 0x25, 0x80, 0xFF}) {
    const Bytes other = RecordOfLength({24}, static_cast<uint8_t>(opcode), {'^', '^'});
    Scan(Join({other, {0x99}, Pad(kTdr, 1, {0x00})}));
    ExpectChain(2, 2);
    shim::ResetDriverGlobals();
    pins_.Select();
    g_compress = image::kRaw;
  }
}

TEST_F(PrescanScan, SkipTruncates) {
  // 15 bits are one byte: the opcode itself.
  Scan(Join({RecordOfLength({15}, 7, {}), {0x99}, Pad(kTdr, 1, {0x00})}));
  ExpectChain(2, 2);
  // 7 bits are none: the discarded byte is the opcode.
  Scan(Join({RecordOfLength({7}, 7, {}), Pad(kTdr, 3, {0x00})}));
  ExpectChain(4, 4);
  AllowLeaks(1);
}

TEST_F(PrescanScan, NegativeLengthStopsTheScan) {
  Scan(Join({Pad(kTdr, 1, {0x00}),
             {0x99},
             RecordOfLength(image::Negative(-64), 7, {}),
             Pad(kTdr, 3, {0x00})}));
  ExpectChain(2, 2);
  EXPECT_EQ(shim::Messages(), zeros_) << "and is not reported";
}

TEST_F(PrescanScan, NegativeLengthUpTo7IsNone) {
  // The discarded byte is the opcode.
  Scan(Join({RecordOfLength(image::Negative(-7), 7, {}), Pad(kTdr, 3, {0x00})}));
  ExpectChain(4, 4);
  Scan(Join({RecordOfLength(image::Negative(-1), 7, {}), Pad(kTdr, 1, {0x00})}));
  ExpectChain(2, 2);
  AllowLeaks(1);
}

TEST_F(PrescanScan, NegativeLengthEndsAtOrBeforeTheOpcode) {
  // The opcode is at index 6. One byte is discarded, the next one is no mark and ends the scan.
  const struct {
    s32 length;
    u64 end;
  } table[] = {{-8, 7}, {-15, 7}, {-16, 6}, {-40, 3}, {-48, 2}};
  for (const auto &row : table) {
    Scan(Join({RecordOfLength(image::Negative(row.length), 7, {}), Pad(kTdr, 3, {0x00})}));
    ExpectChain(1, 1);
    EXPECT_EQ(g_pos, row.end) << row.length;
    shim::ResetDriverGlobals();
    pins_.Select();
    g_compress = image::kRaw;
  }
}

TEST_F(PrescanScan, NegativeLengthThatLeadsBackToAMarkOrOutOfTheImageStopsTheScan) {
  // The mark is at index 3, the opcode at 9. A scan that went on from the mark would never end.
  const struct {
    s32 length;
    u64 end;
  } table[] = {{-56, 11}, {-63, 11}, {-64, 3}, {-72, 2}, {-79, 2}, {-80, 11}, {INT32_MIN, 11}};
  for (const auto &row : table) {
    Load(Join({{0, 0, 0}, RecordOfLength(image::Negative(row.length), 7, {}), Pad(kTdr, 3, {0})}));
    g_pos = 3;
    EXPECT_EQ(Quorlan_ReadChipIdcode(), 0);
    ExpectChain(1, 1);
    EXPECT_EQ(g_pos, row.end) << row.length;
    shim::ResetDriverGlobals();
    pins_.Select();
    g_compress = image::kRaw;
  }
}

TEST_F(PrescanScan, MissingTdiEndsTheScan) {
  Scan(Join({image::Record(kSir, {1, 23}), {0x99}, Pad(kTdr, 3, {0x00})}));
  ExpectChain(1, 1);
  EXPECT_EQ(shim::Messages(), session::Join({{session::BadSirInfo()}, zeros_}));
}

TEST_F(PrescanScan, MissingEndGoesOnWithWhatWasCounted) {
  Scan(Join({image::Record(kSir, {16, 15, 0xFF, 0x60, 16}), {0x99}, Pad(kTdr, 3, {0x00})}));
  ExpectChain(4, 5);
  EXPECT_EQ(shim::Messages(), session::Join({{session::BadSirInfo()}, zeros_}));
  AllowLeaks(1);
}

TEST_F(PrescanScan, UndecodableBlockEndsTheScan) {
  g_compress = 0;
  Scan(Join({image::Record(kSir, {8, 15, 5, 0x60, 23}), Pad(kTdr, 3, {0x00})}));
  ExpectChain(1, 1);
  EXPECT_EQ(shim::Messages(), session::Join({{session::BadMode()}, zeros_}));
}

TEST_F(PrescanScan, LevelsAreOf32Bits) {
  // A trailer of 2^32 - 1 bits and one device: level 0, and total 0 with no header.
  Scan(Join({RecordOfLength({8}, kTdr, image::Negative(-1)), {15, 0, 23}}));
  ExpectChain(0, 0);
  Scan(Join(
      {RecordOfLength({8}, kTdr, image::Negative(-1)), {15, 0, 23, 0x99}, Pad(kHdr, 3, {0x00})}));
  ExpectChain(0, 3);
  AllowLeaks(shim::kAnyLeaks);
}

TEST_F(PrescanScan, ChainThatCannotBeIsNotShifted) {
  Scan(Join({RecordOfLength({8}, kHdr, image::Number(0x7FFFFFF0)), {15, 0, 23}}));
  ExpectChain(1, 0x7FFFFFF1);
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(shim::Messages(), Messages{session::NoIdcode()});
  EXPECT_EQ(g_status, 1u);
}

TEST_F(PrescanScan, ChainWhoseScansNoVectorHoldsStopsTheDownload) {
  // The instructions of 600001 devices can be had, the vector of their scan cannot.
  Scan(Join({RecordOfLength({8}, kHdr, image::Number(600000)), {15, 0, 23}}));
  ExpectChain(1, 600001);
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(shim::Messages().back(), session::NoIdcode());
  EXPECT_EQ(g_status, 0u) << "a vector that cannot be had ends the download";
  EXPECT_EQ(g_stop_code, RESULT_NO_MEMORY);
}

TEST_F(PrescanScan, FailedReadIsReportedAndIgnored) {
  g_status = 0;
  Scan({'x'});
  EXPECT_EQ(shim::Messages(), Messages{session::NoIdcode()});
  EXPECT_EQ(pins_.writes(), 0u);
}

TEST_F(PrescanScan, ChainOfTheEarlierScanIsForgotten) {
  Scan(Pad(kTdr, 2, {0x00}));
  Scan({'x'});
  ExpectChain(1, 1);
  AllowLeaks(1);
}

}  // namespace
