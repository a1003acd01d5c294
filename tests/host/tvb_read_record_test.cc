// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The reader's view of headers and records, literally.
#include <gtest/gtest.h>

#include "image.h"
#include "tvb/reader.h"

namespace {

using image::Bytes;
using tvb::RecordView;

// The one record of a file of plain blocks.
RecordView Only(const Bytes &record) {
  const Bytes file = image::Join({image::Header(), record});
  tvb::Reader reader(file, tvb::ReadHeader(file));
  const auto view = reader.Next();
  EXPECT_TRUE(view);
  return view.value_or(RecordView());
}

std::vector<RecordView> All(const Bytes &file) {
  std::vector<RecordView> records;
  tvb::Reader reader(file, tvb::ReadHeader(file));
  while (auto record = reader.Next()) {
    records.push_back(*record);
  }
  return records;
}

TEST(TvbReadHeader, FieldsStandWhereTheyShould) {
  const Bytes file = {'a', 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0xF2, 'b', 0x85, 0x01, 'V', 1};
  const tvb::HeaderView view = tvb::ReadHeader(file);
  EXPECT_FALSE(view.fault);
  EXPECT_EQ(view.size, 17u);
  EXPECT_TRUE(view.plain());
  EXPECT_EQ(view.header.mark, (std::array<uint8_t, 2>{1, 2}));
  EXPECT_EQ(view.header.stamp, (std::array<uint8_t, 8>{3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(view.header.number, 133u);
}

TEST(TvbReadHeader, EachMarkIsTested) {
  for (size_t at : {0, 12, 14, 15}) {
    Bytes file = image::Header();
    file[at] ^= 0x20;
    const tvb::HeaderView view = tvb::ReadHeader(file);
    ASSERT_TRUE(view.fault);
    EXPECT_EQ(view.fault->offset, at);
  }
}

TEST(TvbReadHeader, EveryPrefixIsCutOff) {
  const Bytes whole = image::Header();
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_TRUE(
        tvb::ReadHeader(Bytes(whole.begin(), whole.begin() + static_cast<long>(size))).fault);
  }
}

TEST(TvbReadNumber, GroupsAreWorthTheirPlace) {
  const std::pair<Bytes, int64_t> numbers[] = {{{0x05}, 5},
                                               {{0x85, 0x01}, 133},
                                               {{0x80, 0x80, 0x01}, 16384},
                                               {{0xFF, 0xFF, 0xFF, 0xFF, 0x07}, 0x7FFFFFFF},
                                               {{0xFF, 0xFF, 0xFF, 0xFF, 0x0F}, -1}};
  for (const auto &[bytes, value] : numbers) {
    tvb::Cursor cursor(bytes, 0);
    const tvb::NumberView number = cursor.Number();
    EXPECT_EQ(number.value, value);
    EXPECT_EQ(number.size, bytes.size());
    EXPECT_FALSE(number.lossy);
    EXPECT_FALSE(number.padded);
    EXPECT_FALSE(cursor.past_end());
  }
}

TEST(TvbReadNumber, MoreThan32BitsAreTold) {
  for (const Bytes &bytes :
       {Bytes{0x80, 0x80, 0x80, 0x80, 0x10}, Bytes{0x80, 0x80, 0x80, 0x80, 0x80, 0x01}}) {
    tvb::Cursor cursor(bytes, 0);
    EXPECT_TRUE(cursor.Number().lossy);
  }
}

TEST(TvbReadNumber, LongerFormsThanNeededAreTold) {
  const Bytes bytes = {0x85, 0x80, 0x00};
  tvb::Cursor cursor(bytes, 0);
  const tvb::NumberView number = cursor.Number();
  EXPECT_EQ(number.value, 5);
  EXPECT_EQ(number.size, 3u);
  EXPECT_TRUE(number.padded);
}

TEST(TvbReadRecord, ShiftTellsItsFieldsAndWhereTheyStand) {
  const RecordView record = Only(image::Sdr(12, {0x12, 0x30}, {0x45, 0x60}, {0xFF, 0xF0}));
  EXPECT_EQ(record.index, 1u);
  EXPECT_EQ(record.offset, 16u);
  EXPECT_EQ(record.opcode_offset, 18u);
  EXPECT_EQ(record.length.value, 96);
  EXPECT_EQ(record.end, 30u);
  EXPECT_EQ(record.EndByLength(), 30);
  EXPECT_EQ(record.bits(), 12u);
  EXPECT_EQ(record.closing, 23);
  ASSERT_EQ(record.fields.size(), 3u);
  EXPECT_EQ(record.fields[1].tag, tvb::kTagTdo);
  EXPECT_EQ(record.fields[1].offset, 23u);
  EXPECT_EQ(record.fields[1].block->offset, 24u);
  EXPECT_EQ(record.fields[1].block->size, 2u);
}

TEST(TvbReadRecord, TheLastOfRepeatedFieldsCounts) {
  const Bytes file =
      image::Join({image::Header(), image::Shift(image::kSir, 8, {15, 0x11, 15, 0x22})});
  const std::vector<RecordView> records = All(file);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(tvb::FieldData(file, records[0], tvb::kTagTdi), (tvb::Buffer{0x22}));
  EXPECT_TRUE(tvb::FieldData(file, records[0], tvb::kTagTdo).empty());
}

TEST(TvbReadRecord, ShiftWithoutFields) {
  const RecordView record = Only({'^', 24, 14, 8, 23});
  EXPECT_FALSE(record.fault);
  EXPECT_TRUE(record.fields.empty());
  EXPECT_EQ(record.end, 21u);
}

TEST(TvbReadRecord, HeadersAndTrailersAreRawWhateverTheHeaderSays) {
  const Bytes file = image::Join({image::Header(0), image::Pad(image::kHir, 12, {0x04, 0x10})});
  const std::vector<RecordView> records = All(file);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(tvb::FieldData(file, records[0], tvb::kTagTdi), (tvb::Buffer{0x04, 0x10}));
  EXPECT_EQ(records[0].end, file.size());
  EXPECT_EQ(Only(image::Pad(image::kHir, 0)).end, 20u);
}

TEST(TvbReadRecord, HeaderWithoutDataTakesItsTagAndClosingByte) {
  const RecordView record = Only({'^', 32, 11, 8, 0x42, 0x43});
  EXPECT_FALSE(record.fault);
  ASSERT_EQ(record.fields.size(), 1u);
  EXPECT_EQ(record.fields[0].tag, 0x42);
  EXPECT_FALSE(record.fields[0].block);
  EXPECT_EQ(record.closing, 0x43);
}

TEST(TvbReadRecord, RunTestFields) {
  const RecordView record = Only(
      image::RunTest(image::Join({{19}, image::WaitField(1010), {19}, image::CycleField(110)})));
  EXPECT_TRUE(record.Runs());
  EXPECT_EQ(record.closing, 23);
  ASSERT_EQ(record.fields.size(), 4u);
  EXPECT_EQ(record.fields[1].number->value, 1010);
  EXPECT_EQ(record.fields[3].number->value, 110);
}

TEST(TvbReadRecord, RunTestMayEndAtTheNextRecord) {
  const Bytes file = image::Join(
      {image::Header(), image::Record(image::kRunTest, {1, 20, 30}), image::Frequency(5)});
  const std::vector<RecordView> records = All(file);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_FALSE(records[0].closing);
  EXPECT_EQ(records[0].EndByLength(), static_cast<int64_t>(records[0].end));
  EXPECT_EQ(records[1].opcode, image::kFrequency);
}

TEST(TvbReadRecord, RunTestMayEndWithTheFile) {
  const RecordView record = Only(image::Record(image::kRunTest, {1, 20, 30}));
  EXPECT_FALSE(record.fault);
  EXPECT_FALSE(record.closing);
  EXPECT_EQ(record.end, 22u);
}

TEST(TvbReadRecord, RunTestThatDoesNotRunEndsAfterItsGate) {
  EXPECT_EQ(Only({'^', 32, 4, 0, 20, 30}).end, 20u);
  EXPECT_EQ(Only({'^', 16, 4, 1, 20, 30}).end, 20u);
  EXPECT_FALSE(Only({'^', 16, 4, 1, 20, 30}).Runs());
}

TEST(TvbReadRecord, ReservedRecordsAreSkippedByLength) {
  for (uint8_t opcode : {1, 5, 6, 19}) {
    EXPECT_EQ(Only(image::Record(opcode, {1, 2, '^'})).end, 22u);
  }
  EXPECT_EQ(Only({'^', 7, 19}).end, 18u);
}

TEST(TvbReadRecord, ReservedRecordOfNegativeLengthIsAFault) {
  const RecordView record = Only(image::RecordOfLength(image::Negative(-8), image::kReserved, {1}));
  ASSERT_TRUE(record.fault);
  EXPECT_EQ(record.fault->offset, 17u);
}

TEST(TvbReadRecord, UnknownOpcodesAreFaults) {
  for (int opcode = 0; opcode < 256; ++opcode) {
    const bool known = opcode == 1 || (opcode >= 4 && opcode <= 7) ||
                       (opcode >= 9 && opcode <= 14) || opcode == 19 || opcode == '$' ||
                       opcode == '%';
    const RecordView record = Only(image::Record(static_cast<uint8_t>(opcode), {0, 23, 0}));
    EXPECT_EQ(!record.fault, known) << opcode;
  }
}

TEST(TvbReadRecord, UnknownTagOfAShiftIsAFault) {
  const RecordView record = Only({'^', 40, 13, 8, 15, 0x11, 18, 23});
  ASSERT_TRUE(record.fault);
  EXPECT_EQ(record.fault->offset, 22u);
  EXPECT_EQ(record.fields.size(), 1u);
}

TEST(TvbReadRecord, TooManyFieldsAreAFault) {
  const Bytes tags(2 * tvb::kMaxFields, image::kTagTdi);
  const RecordView record = Only(image::Shift(image::kSdr, 0, tags));
  ASSERT_TRUE(record.fault);
  EXPECT_EQ(record.fields.size(), tvb::kMaxFields);
}

TEST(TvbReader, StopsAtWhatIsNoRecord) {
  const Bytes file = image::Join({image::Header(), image::Frequency(1), {'x', '^'}});
  tvb::Reader reader(file, tvb::ReadHeader(file));
  EXPECT_TRUE(reader.Next());
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.position(), file.size() - 2);
  EXPECT_EQ(reader.records(), 1u);
}

TEST(TvbReader, EveryPrefixOfAFileEndsCleanlyOrInAFault) {
  const Bytes file = image::Join(
      {image::Header(0), image::Shift(image::kSir, 8, {15, 1, 0xAA, 0x55}),
       image::Pad(image::kHdr, 9, {1, 2}), image::Loop(3),
       image::Shift(image::kSdr, 16, {15, 4, 0, 0x41, 0xFF, 0xFE, 0x03, 16, 2, 1, 0x50}),
       image::EndLoop(), image::Record(image::kReserved, {1, 2}), image::RunCycles(1000)});
  const std::vector<RecordView> whole = All(file);
  ASSERT_EQ(whole.size(), 7u);
  for (size_t size = 16; size < file.size(); ++size) {
    const std::vector<RecordView> part =
        All(Bytes(file.begin(), file.begin() + static_cast<long>(size)));
    for (size_t i = 0; i < part.size(); ++i) {
      EXPECT_LE(part[i].offset, size);
      const bool cut = whole[i].end > size;
      const bool skipped =
          whole[i].opcode == image::kReserved || whole[i].opcode == image::kRunTest;
      EXPECT_TRUE(part[i].fault.has_value() == cut || (cut && skipped)) << size << " " << i;
    }
  }
}

}  // namespace
