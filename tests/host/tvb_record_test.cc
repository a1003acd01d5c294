// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Headers and records of every type, byte for byte.
#include <gtest/gtest.h>

#include "tvb/writer.h"
#include "tvb_data.h"

namespace {

using tvb::BlockChoice;
using tvb::Buffer;
using tvb::Encoding;
using tvb::FileHeader;
using tvb::Writer;
using namespace std::chrono_literals;

// What `write` puts after the header of a file with `header`.
template <typename Write>
Buffer Records(Write write, const FileHeader &header = {}) {
  Writer writer(header);
  writer.Take();
  write(writer);
  return writer.Take();
}

// The same with raw blocks.
template <typename Write>
Buffer RawRecords(Write write) {
  return Records([&](Writer &w) {
    w.Encode(BlockChoice::As(Encoding::kRaw));
    write(w);
  });
}

TEST(TvbHeader, IsEighteenBytesUnlessTheNumberIsLong) {
  EXPECT_EQ(Writer().Take(), Buffer({'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'b', 0, 'V', 1}));
  FileHeader header;
  header.mark = {0x11, 0x12};
  header.stamp = {1, 2, 3, 4, 5, 6, 7, 8};
  header.compression = 0x33;
  header.number = 129;
  EXPECT_EQ(Writer(header).Take(),
            Buffer({'a', 0x11, 0x12, 1, 2, 3, 4, 5, 6, 7, 8, 0x33, 'b', 0x81, 0x01, 'V', 1}));
  EXPECT_EQ(Writer(FileHeader::Plain()).Take()[11], 0xF2);
}

TEST(TvbRecord, LengthCountsBitsFromTheOpcodeOn) {
  EXPECT_EQ(Records([](Writer &w) { w.Reserved(1, {}); }), Buffer({'^', 8, 1}));
  EXPECT_EQ(Records([](Writer &w) { w.Reserved(5, Buffer{0xAB}); }), Buffer({'^', 16, 5, 0xAB}));
  Buffer body(15, 0xEE);
  Buffer record = Records([&](Writer &w) { w.Reserved(6, body); });
  EXPECT_EQ(Buffer(record.begin(), record.begin() + 4), Buffer({'^', 0x80, 0x01, 6}));
  EXPECT_EQ(record.size(), 4u + 15);
  body.assign(2047, 0x5E);
  record = Records([&](Writer &w) { w.Reserved(19, body); });
  EXPECT_EQ(Buffer(record.begin(), record.begin() + 5), Buffer({'^', 0x80, 0x80, 0x01, 19}));
  EXPECT_EQ(record.size(), 5u + 2047);
}

TEST(TvbRecord, AnyOpcodeCanBeFramed) {
  EXPECT_EQ(Records([](Writer &w) { w.Record(2, Buffer{1, 2}); }), Buffer({'^', 24, 2, 1, 2}));
  EXPECT_EQ(Records([](Writer &w) { w.Record(0xFF, {}); }), Buffer({'^', 8, 0xFF}));
}

// The length is tested before the body is looked at, so there need not be one.
TEST(TvbRecord, ABodyTooLongForItsLengthIsRefused) {
  Buffer file = {1, 2, 3};
  EXPECT_THROW(tvb::AppendRecord(file, 1, tvb::Bytes(file.data(), (size_t{1} << 28) - 1)),
               tvb::Error);
  EXPECT_EQ(file, Buffer({1, 2, 3}));
}

TEST(TvbRecord, ShiftsHoldTheirFieldsInOrder) {
  EXPECT_EQ(RawRecords([](Writer &w) { w.Sir(8, Buffer{0x60}); }),
            Buffer({'^', 48, 14, 8, 15, 0, 0x60, 23}));
  EXPECT_EQ(RawRecords([](Writer &w) {
              w.Sdr(12, Buffer{0x12, 0x30}, Buffer{0x45, 0x60});
            }),
            Buffer({'^', 88, 13, 12, 15, 0, 0x12, 0x30, 16, 0, 0x45, 0x60, 23}));
  EXPECT_EQ(RawRecords([](Writer &w) { w.Sdr(8, Buffer{0x12}, Buffer{0x45}, Buffer{0xF0}); }),
            Buffer({'^', 96, 13, 8, 15, 0, 0x12, 16, 0, 0x45, 17, 0, 0xF0, 23}));
}

TEST(TvbRecord, AShiftOfNoBitsHasNoFields) {
  EXPECT_EQ(Records([](Writer &w) { w.Sdr(0, {}); }), Buffer({'^', 24, 13, 0, 23}));
  EXPECT_EQ(Records([](Writer &w) { w.Sir(0, {}); }), Buffer({'^', 24, 14, 0, 23}));
}

TEST(TvbRecord, ShiftsTakeTheEncodingInForce) {
  EXPECT_EQ(Records([](Writer &w) {
              w.Sdr(24, Buffer{0xAA, 0xAA, 0xAA});
            }),
            Buffer({'^', 56, 13, 24, 15, 2, 1, 0xA0, 23}));
  EXPECT_EQ(Records([](Writer &w) {
              w.Encode(BlockChoice::As(Encoding::kRunLength));
              w.Sdr(24, Buffer{0xAA, 0xAA, 0xAA});
              w.Encode(BlockChoice::With(Encoding::kLzw, 2));
              w.Sdr(8, Buffer{0x41});
              w.Encode(BlockChoice());
              w.Sdr(8, Buffer{0x41});
            }),
            Buffer({'^', 64, 13,   24,   15,   1,  0xAA, 0xAA, 2,  23, '^', 72, 13,   8, 15,
                    4,   2,  0x41, 0xFF, 0x01, 23, '^',  48,   13, 8,  15,  0,  0x41, 23}));
}

TEST(TvbRecord, PlainBlocksHaveNoModeByte) {
  EXPECT_EQ(Records(
                [](Writer &w) {
                  w.Sdr(16, Buffer{0, 0}, Buffer{0, 0}, Buffer{0xFF, 0xFF});
                },
                FileHeader::Plain()),
            Buffer({'^', 96, 13, 16, 15, 0, 0, 16, 0, 0, 17, 0xFF, 0xFF, 23}));
  Writer writer(FileHeader::Plain());
  EXPECT_THROW(writer.Encode(BlockChoice::As(Encoding::kRaw)), tvb::Error);
}

TEST(TvbRecord, LongRegistersHaveLongNumbers) {
  Buffer data = tvb_data::Random(250, 4);
  Buffer record = RawRecords([&](Writer &w) { w.Sdr(2000, data); });
  // 8 * (1 opcode + 2 length + 1 tag + 1 mode + 250 data + 1 end) = 2048.
  Buffer expected = {'^', 0x80, 0x10, 13, 0xD0, 0x0F, 15, 0};
  expected.insert(expected.end(), data.begin(), data.end());
  expected.push_back(23);
  EXPECT_EQ(record, expected);
}

TEST(TvbRecord, HeadersAndTrailersAreAlwaysRaw) {
  EXPECT_EQ(Records([](Writer &w) {
              w.Tdr(12, Buffer{0xFF, 0xF0});
            }),
            Buffer({'^', 48, 9, 12, 15, 0xFF, 0xF0, 23}));
  EXPECT_EQ(Records([](Writer &w) { w.Tir(8, Buffer{0xFF}); }),
            Buffer({'^', 40, 10, 8, 15, 0xFF, 23}));
  EXPECT_EQ(Records([](Writer &w) { w.Hdr(1, Buffer{0x80}); }),
            Buffer({'^', 40, 11, 1, 15, 0x80, 23}));
  EXPECT_EQ(Records([](Writer &w) {
              w.Hir(24, Buffer{0xFF, 0xFF, 0xFF});
            }),
            Buffer({'^', 56, 12, 24, 15, 0xFF, 0xFF, 0xFF, 23}));
  EXPECT_EQ(Records([](Writer &w) { w.Hir(0, {}); }), Buffer({'^', 16, 12, 0}));
  EXPECT_EQ(Records([](Writer &w) { w.ClearPads(); }),
            Buffer({'^', 16, 12, 0, '^', 16, 10, 0, '^', 16, 11, 0, '^', 16, 9, 0}));
}

TEST(TvbRecord, Frequencies) {
  EXPECT_EQ(Records([](Writer &w) { w.Frequency(1000000); }),
            Buffer({'^', 32, 7, 0xC0, 0x84, 0x3D}));
  EXPECT_EQ(Records([](Writer &w) { w.Frequency(0); }), Buffer({'^', 16, 7, 0}));
  EXPECT_EQ(Records([](Writer &w) { w.FreshFrequency(100); }),
            Buffer({'^', 16, 7, 0, '^', 16, 7, 100}));
}

TEST(TvbRecord, Loops) {
  EXPECT_EQ(Records([](Writer &w) {
              w.BeginLoop(300);
              w.Reserved(1, {});
              w.EndLoop();
            }),
            Buffer({'^', 24, '$', 0xAC, 0x02, '^', 8, 1, '^', 8, '%'}));
}

TEST(TvbRecord, RunTests) {
  EXPECT_EQ(Records([](Writer &w) { w.RunTest(100); }), Buffer({'^', 40, 4, 1, 20, 110, 23}));
  EXPECT_EQ(Records([](Writer &w) { w.RunTest(1ms); }),
            Buffer({'^', 48, 4, 1, 24, 0xF2, 0x07, 23}));
  EXPECT_EQ(Records([](Writer &w) { w.RunTest(5, 20us); }),
            Buffer({'^', 56, 4, 1, 24, 30, 20, 15, 23}));
}

TEST(TvbRecord, TheEndIsARunTestThatDoesNotRun) {
  Writer writer;
  writer.Take();
  EXPECT_EQ(writer.Finish(), Buffer({'^', 16, 4, 0}));
  Writer unguarded;
  unguarded.Take();
  EXPECT_EQ(unguarded.FinishUnguarded(), Buffer());
}

TEST(TvbRecord, TheOpeningShiftsTheTargetsInstructionToItsPlace) {
  EXPECT_EQ(Records([](Writer &w) { w.Opening(0, 0); }), Buffer({'^', 48, 14, 8, 15, 0, 0x60, 23}));
  // Two devices lie before the target and one after: its own byte goes out second.
  EXPECT_EQ(RawRecords([](Writer &w) { w.Opening(2, 1, 0xE0); }),
            Buffer({'^', 72, 14, 32, 15, 0, 0xFF, 0x07, 0xFF, 0xFF, 23}));
}

}  // namespace
