// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The checker: what it says of each thing that can be wrong, and that it says only that.
#include <gtest/gtest.h>

#include "image.h"
#include "tvb/checker.h"
#include "tvb/writer.h"

namespace {

using image::Bytes;
using tvb::Finding;
using tvb::Severity;

// Plain blocks; the records start at offset 16.
Bytes File(const Bytes &records) {
  return image::Join({image::Header(), records});
}

// A comparison of an IDCODE.
const Bytes kZeros(4);
const Bytes kIdcode = {0xAC, 0x32, 0x80, 0x50};
const Bytes kOnes(4, 0xFF);

// Blocks with modes.
Bytes ModeFile(const Bytes &records) {
  return image::Join({image::Header(0), records});
}

std::vector<Finding> Check(const Bytes &file) {
  std::vector<Finding> findings;
  const tvb::CheckResult result =
      tvb::CheckImage(file, [&findings](const Finding &finding) { findings.push_back(finding); });
  EXPECT_EQ(result.errors + result.warnings, findings.size());
  return findings;
}

struct Expected {
  Severity severity;
  uint64_t offset;
  uint64_t record;
  std::string text;  // in the message
};

void ExpectFindings(const Bytes &file, const std::vector<Expected> &expected) {
  const std::vector<Finding> found = Check(file);
  for (size_t i = 0; i < std::max(found.size(), expected.size()); ++i) {
    if (i >= found.size()) {
      ADD_FAILURE() << "not found: " << expected[i].text;
    } else if (i >= expected.size()) {
      ADD_FAILURE() << "also found: " << found[i].message;
    } else {
      EXPECT_EQ(found[i].severity, expected[i].severity) << found[i].message;
      EXPECT_EQ(found[i].offset, expected[i].offset) << found[i].message;
      EXPECT_EQ(found[i].record, expected[i].record) << found[i].message;
      EXPECT_NE(found[i].message.find(expected[i].text), std::string::npos) << found[i].message;
    }
  }
}

void ExpectOnly(const Bytes &file, Severity severity, uint64_t offset, uint64_t record,
                const std::string &text) {
  ExpectFindings(file, {{severity, offset, record, text}});
}

void ExpectClean(const Bytes &file) {
  ExpectFindings(file, {});
}

// A shift record with fields in mode blocks, and something after it.
Bytes WithBlock(uint64_t bits, const Bytes &block) {
  return ModeFile(
      image::Join({image::Shift(image::kSdr, bits, image::Field(15, block)), image::Nothing()}));
}

// What the first header or trailer of a file always gets.
Expected NotDriven(uint64_t offset, uint64_t record) {
  return {Severity::kWarning, offset, record,
          "the player does not drive TDI for the bits of headers"};
}

// The frequency is unset first, so that run-tests are certain.
Bytes WithRunTest(const Bytes &fields) {
  return File(image::Join({image::Frequency(0), image::RunTest(fields)}));
}

TEST(TvbCheck, WhatTheWriterWritesIsClean) {
  tvb::Writer writer;
  writer.Opening(1, 1);
  writer.FreshFrequency(5000000);
  writer.Sdr(32, kZeros, kIdcode, kOnes);
  const tvb::Buffer data(40, 0x5A);
  writer.BeginLoop(3);
  writer.Sdr(320, data, data, data);
  writer.EndLoop();
  writer.RunTest(100, std::chrono::microseconds(40001));
  for (int mode = 0; mode <= 4; ++mode) {
    writer.Encode(tvb::BlockChoice::As(static_cast<tvb::Encoding>(mode)));
    writer.Sdr(320, data, data, data);
  }
  writer.Reserved(19, tvb::Buffer{1, 2});
  writer.ClearPads();
  ExpectClean(writer.Finish());
}

TEST(TvbCheck, PlainFileIsClean) {
  ExpectClean(File(image::Join({image::Sir(8, {0x60}), image::Sdr(32, kZeros, kIdcode, kOnes),
                                image::Sdr(12, {1, 2}, {3, 4}, {5, 0x60}), image::Frequency(0),
                                image::RunCycles(100)})));
}

TEST(TvbCheck, WaitBeforeAnIdcodeIsCompared) {
  const Bytes erase = image::Sir(8, {0x20});
  const Bytes wait = image::Join({image::Frequency(0), image::RunCycles(100)});
  ExpectOnly(File(image::Join({erase, wait})), Severity::kWarning, 16, 1, "waits after this scan");
  ExpectOnly(File(image::Join({wait, erase, wait, image::Sdr(8, {0}), image::Nothing()})),
             Severity::kWarning, 27, 3, "waits after this scan");
  ExpectOnly(File(image::Join({image::Sir(8, {0x60}), erase})), Severity::kWarning, 23, 2,
             "second instruction");
}

TEST(TvbCheck, LongestScanThatComparesAnIdcode) {
  const auto file = [](uint32_t bits) {
    const size_t bytes = tvb::BytesOfBits(bits);
    tvb::Buffer tdo(bytes, 0);
    std::ranges::copy(kIdcode, tdo.begin());
    tvb::Writer writer;
    writer.Opening(1, 1);
    writer.FreshFrequency(1000000);
    writer.Sdr(bits, tvb::Buffer(bytes, 0), tdo, tvb::Buffer(bytes, 0xFF));
    writer.RunTest(100, std::chrono::microseconds(0));
    return writer.Finish();
  };
  ExpectClean(file(65536));
  ExpectOnly(file(65537), Severity::kWarning, 36, 4, "waits after this scan");
}

TEST(TvbCheck, InstructionOfAnotherLength) {
  ExpectOnly(File(image::Join({image::Sir(10, {0x60, 0}), image::Sir(10, {0x60, 0})})),
             Severity::kWarning, 16, 1, "this instruction has 10 bits, but before every file");
}

TEST(TvbCheck, NoTvbFile) {
  std::vector<Finding> findings;
  const Bytes file = {'b', 1, 2};
  const tvb::CheckResult result =
      tvb::CheckImage(file, [&findings](const Finding &finding) { findings.push_back(finding); });
  EXPECT_FALSE(result.is_tvb);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].message,
            "not a TVB file: 0x62 in its header; expected 'a' as its first byte");
}

TEST(TvbCheck, NoRecords) {
  ExpectOnly(File({}), Severity::kWarning, 16, 0, "no records");
}

TEST(TvbCheck, LengthNotExact) {
  const Bytes next = image::Nothing();
  ExpectOnly(File(image::Join({{'^', 24, 7, 0}, next})), Severity::kError, 16, 1,
             "a length of 24 bits; expected 16, opcode and body being 2 bytes");
  ExpectOnly(File(image::Join({{'^', 17, 7, 0}, next})), Severity::kError, 16, 1,
             "a length of 17 bits");
  ExpectOnly(File(image::Join({image::RecordOfLength(image::Negative(-16), 7, {0}), next})),
             Severity::kError, 16, 1, "a length of -16 bits");
}

TEST(TvbCheck, LengthThatHidesWhatThePlayerTrips) {
  ExpectFindings(File({'^', 24, 7, 0, 'x', '^', 8, 2}),
                 {{Severity::kBroken, 16, 1, "stops at what follows, 0x78 instead of '^'"},
                  {Severity::kBroken, 23, 2, "unknown opcode 0x02"}});
}

TEST(TvbCheck, UnknownOpcode) {
  ExpectOnly(File(image::Join({image::Record(0x42, {1, 2}), image::Nothing()})), Severity::kBroken,
             18, 1, "unknown opcode 0x42");
}

TEST(TvbCheck, UnknownTagInAShift) {
  ExpectOnly(File(image::Join({image::Shift(13, 8, {18, 1}), image::Nothing()})), Severity::kBroken,
             20, 1, "tag 0x12 in a shift; expected 15");
}

TEST(TvbCheck, CheckingGoesOnAfterAFault) {
  ExpectFindings(
      File(image::Join({image::Record(0x42, {}), image::Record(0x43, {}), image::EndLoop()})),
      {{Severity::kBroken, 18, 1, "0x42"},
       {Severity::kBroken, 21, 2, "0x43"},
       {Severity::kError, 22, 3, "ENDLOOP without a LOOP"}});
}

TEST(TvbCheck, FileEndsInsideARecord) {
  ExpectOnly(File({'^', 40, 13, 32, 15, 1, 2}), Severity::kBroken, 23, 1,
             "the file ends inside the TDI data of this record, which begins at 0x10");
  ExpectOnly(File({'^', 16, 7}), Severity::kBroken, 19, 1, "the file ends inside this record");
  ExpectOnly(File({'^'}), Severity::kBroken, 17, 1, "the file ends inside this record");
}

TEST(TvbCheck, SomethingElseWhereARecordShouldBegin) {
  ExpectOnly(File(image::Join({image::Nothing(), {'x', 1, 2}})), Severity::kBroken, 19, 0,
             "0x78 where a record should begin");
}

TEST(TvbCheck, BlockOfUnknownEncoding) {
  ExpectOnly(WithBlock(8, {7, 1}), Severity::kBroken, 21, 1,
             "TDI data: encoding 0x07 of a data block; expected 0 to 4");
}

TEST(TvbCheck, BlocksThatDecodeToTooMuch) {
  ExpectOnly(WithBlock(16, {1, 0xAA, 0xAA, 5}), Severity::kBroken, 21, 1,
             "TDI data (run-length): decodes to 6 bytes, but its register takes 2");
  ExpectOnly(WithBlock(16, {4, 0x00, 0x41, 0xFF, 0xFE, 0x03}), Severity::kBroken, 21, 1,
             "TDI data (lzw): decodes to 3 bytes, but its register takes 2");
}

TEST(TvbCheck, BlocksThatDecodeToTooLittle) {
  ExpectOnly(WithBlock(32, {4, 0x00, 0x41, 0xFF, 0xFE, 0x03}), Severity::kBroken, 21, 1,
             "TDI data (lzw): decodes to 3 of the 4 bytes");
  ExpectOnly(WithBlock(40, {2, 4, 0x12, 0x34}), Severity::kBroken, 21, 1,
             "a pattern of 4 nibbles does not fill 5 bytes in whole copies: 4 bytes written");
  ExpectOnly(WithBlock(8, {2, 0}), Severity::kBroken, 21, 1, "a pattern of 0 nibbles");
}

TEST(TvbCheck, LzwDictionarySize) {
  ExpectOnly(WithBlock(8, {4, 4}), Severity::kBroken, 22, 1, "dictionary size 0x04");
}

TEST(TvbCheck, LzwStreamWithoutAnEnd) {
  Bytes noise(200, 0x5A);
  noise[0] = 4;
  noise[1] = 0;
  ExpectOnly(ModeFile(image::Shift(13, 8, image::Field(15, noise))), Severity::kBroken, 16 + 207, 1,
             "the file ends inside the TDI data");
}

TEST(TvbCheck, NumbersOfRunsAndPatterns) {
  ExpectOnly(WithBlock(8, {1, 0xAA, 0xAA, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}), Severity::kBroken, 24, 1,
             "a run of -1 more bytes");
  ExpectOnly(WithBlock(8, {2, 0x80, 0x80, 0x80, 0x80, 0x08}), Severity::kBroken, 22, 1,
             "a pattern of -2147483648 nibbles");
}

TEST(TvbCheck, MaskWithoutTdo) {
  ExpectOnly(File(image::Join({image::Shift(13, 8, {15, 1, 17, 0xFF}), image::Nothing()})),
             Severity::kError, 16, 1, "MASK without TDO");
}

TEST(TvbCheck, TdoWithoutMask) {
  ExpectOnly(File(image::Join({image::Shift(13, 8, {15, 1, 16, 0xFF}), image::Nothing()})),
             Severity::kWarning, 16, 1, "TDO without MASK");
}

TEST(TvbCheck, MaskOfZeros) {
  // The bits past the register's length do not count.
  ExpectOnly(File(image::Join({image::Sdr(4, {1}, {1}, {0x0F}), image::Nothing()})),
             Severity::kWarning, 16, 1, "MASK is all zeros");
}

TEST(TvbCheck, FieldsGivenTwice) {
  ExpectOnly(File(image::Join({image::Shift(13, 8, {15, 1, 15, 2}), image::Nothing()})),
             Severity::kWarning, 16, 1, "TDI is given more than once");
}

TEST(TvbCheck, ShiftWithoutTdi) {
  ExpectOnly(File(image::Join({image::Shift(13, 8, {}), image::Nothing()})), Severity::kError, 16,
             1, "without TDI");
}

TEST(TvbCheck, ShiftOfNoBits) {
  ExpectOnly(File(image::Join({image::Shift(13, 0, {}), image::Nothing()})), Severity::kBroken, 16,
             1, "leaves the TAP in a pause state");
  // A trailer's last bit leads out of Shift.
  ExpectFindings(File(image::Join({image::Pad(image::kTdr, 1, {0x80}), image::Shift(13, 0, {}),
                                   image::Pad(image::kTdr, 0)})),
                 {NotDriven(16, 1)});
}

TEST(TvbCheck, VerifyInTheLastRecord) {
  const Bytes verify = image::Sdr(8, {1}, {2}, {3});
  ExpectOnly(File(verify), Severity::kError, 16, 1, "the last record compares TDO");
  ExpectClean(File(image::Join({verify, image::Nothing()})));
  ExpectClean(File(image::Join({image::Loop(2), verify, image::EndLoop()})));
}

TEST(TvbCheck, RegisterLengthThatIsNone) {
  const Bytes record =
      image::RecordOfLength({88}, 13, image::Join({image::Negative(-8), {15, 1, 2, 3, 23}}));
  ExpectOnly(File(image::Join({record, image::Nothing()})), Severity::kBroken, 19, 1,
             "register length of -8; expected 0 to 2147483647 bits");
}

// A scan of 0 bytes in nibbles, so that the file stays small.
Bytes LongShift(uint8_t opcode, uint64_t bits) {
  return image::Shift(opcode, bits, image::Field(15, {2, 2, 0x5A}));
}

TEST(TvbCheck, RegistersThatCannotBeHeld) {
  ExpectClean(ModeFile(LongShift(13, 4194298 - 2)));
  ExpectOnly(ModeFile(LongShift(13, 4194304)), Severity::kBroken, 19, 1,
             "SDR of 4194304 bits takes 4194309 clocks in all, but the player holds 4194303");
  // 4194296 bits and 5 or 6 clocks fit, but not with a header.
  const Bytes header = image::Pad(image::kHdr, 4, {0});
  ExpectFindings(
      ModeFile(image::Join({header, LongShift(13, 4194296), image::Pad(image::kHdr, 0)})),
      {NotDriven(16, 1), {Severity::kBroken, 16 + header.size() + 3, 2, "4194305 clocks"}});
}

TEST(TvbCheck, HeadersAndTrailers) {
  const Bytes rest = image::Nothing();
  ExpectOnly(File(image::Join({image::Record(image::kTdr, {8, 16, 23}), rest})), Severity::kBroken,
             20, 1, "tag 0x10 in a header or trailer; expected 15 (TDI) and 1 byte");
  ExpectFindings(
      File(
          image::Join({image::Record(image::kTdr, {1, 15, 0x80, 24}), image::Pad(image::kTdr, 0)})),
      {{Severity::kError, 16, 1, "closes with 0x18; expected the end tag 23"}, NotDriven(16, 1)});
}

TEST(TvbCheck, HeadersLeftAtTheEnd) {
  ExpectFindings(
      File(image::Pad(image::kTdr, 1, {0x80})),
      {NotDriven(16, 1), {Severity::kWarning, 16, 1, "still set at the end of the file: TDR"}});
}

TEST(TvbCheck, FirstRecordThatDoesNotTellTheChain) {
  const Bytes pads =
      image::Join({image::Pad(image::kHir, 16, {0xFF, 0xFF}), image::Pad(image::kTdr, 1, {0x80}),
                   image::Pad(image::kHir, 0), image::Pad(image::kTdr, 0)});
  ExpectFindings(File(image::Join({image::Sir(32, {0xFF, 0xFF, 0x60, 0xFF}), pads})),
                 {NotDriven(26, 2)});
  ExpectFindings(
      File(image::Join({image::Sir(8, {0x60}), pads})),
      {NotDriven(23, 2),
       {Severity::kWarning, 23, 2,
        "a chain with 1 device before the target and 2 after it, but the first record tells the "
        "player of 0 devices before the target and 0 after it"}});
}

TEST(TvbCheck, Loops) {
  const Bytes body = image::Nothing();
  ExpectOnly(File(image::Join({image::Loop(2), image::Loop(3), body, image::EndLoop()})),
             Severity::kError, 20, 2, "a loop inside the loop of record 1");
  ExpectOnly(File(image::Join({image::Loop(2), body})), Severity::kError, 16, 1, "not closed");
  ExpectOnly(File(image::EndLoop()), Severity::kError, 16, 1, "ENDLOOP without a LOOP");
  ExpectOnly(File(image::Join({image::Loop(0), body, image::EndLoop()})), Severity::kWarning, 16, 1,
             "a loop count of 0");
  ExpectOnly(File(image::Join({image::Record('$', image::Negative(-1)), body, image::EndLoop()})),
             Severity::kError, 16, 1, "a loop count of -1");
}

TEST(TvbCheck, RunTestGates) {
  ExpectOnly(File({'^', 16, 4, 1}), Severity::kWarning, 16, 1, "makes the player pass over it");
  ExpectOnly(File({'^', 16, 4, 7}), Severity::kWarning, 16, 1, "gate byte 0x07");
  ExpectOnly(File({'^', 32, 4, 0, 20, 30}), Severity::kBroken, 16, 1,
             "a length of 32 bits; expected 16");
  ExpectClean(File({'^', 16, 4, 0}));
}

TEST(TvbCheck, RunTestNumbersBelowTheirOffsets) {
  ExpectOnly(WithRunTest(image::CycleField(9)), Severity::kBroken, 25, 2, "CYCLES number 9");
  ExpectOnly(WithRunTest(image::WaitField(3)), Severity::kBroken, 25, 2, "TIME number 3");
  ExpectOnly(WithRunTest(image::CycleField(32770)), Severity::kBroken, 25, 2,
             "CYCLES number 32770");
  ExpectOnly(WithRunTest(image::Join({{20}, image::Negative(-1)})), Severity::kBroken, 25, 2,
             "CYCLES number -1");
  ExpectClean(WithRunTest(image::Join({image::CycleField(10), image::WaitField(32778),
                                       image::WaitField(32779), image::CycleField(32778)})));
}

TEST(TvbCheck, RunTestsThatOverflow) {
  const Bytes most = image::CycleField(0x7FFFFFFF);
  ExpectOnly(WithRunTest(image::Join({most, most})), Severity::kBroken, 20, 2,
             "a run-test of 4294901738 clocks at 1000000 Hz; the player counts to 2147483647");
  ExpectOnly(File(image::Join({image::Frequency(0), image::Frequency(2000000000),
                               image::RunTest(image::WaitField(32778 + 2000))})),
             Severity::kBroken, 28, 3, "4000000000 clocks at 2000000000 Hz");
}

TEST(TvbCheck, UnknownTagInARunTest) {
  ExpectOnly(File(image::Join({image::Frequency(0), image::Record(4, {1, 20, 30, 99})})),
             Severity::kBroken, 26, 2, "tag 0x63 in a run-test");
}

TEST(TvbCheck, FrequenciesCarriedOver) {
  ExpectOnly(File(image::Join({image::Frequency(1000), image::RunCycles(1)})), Severity::kWarning,
             16, 1, "no FREQUENCY 0 before this");
  ExpectOnly(File(image::RunCycles(1)), Severity::kWarning, 16, 1, "no FREQUENCY 0 before this");
}

TEST(TvbCheck, FrequencyWithoutEffect) {
  ExpectOnly(
      File(image::Join({image::Frequency(0), image::Frequency(1000), image::Frequency(2000)})),
      Severity::kWarning, 25, 3, "FREQUENCY 2000 has no effect: the lower 1000 Hz");
  ExpectOnly(
      File(image::Join({image::Frequency(0), image::RunCycles(1), image::Frequency(2000000)})),
      Severity::kWarning, 27, 3, "the lower 1000000 Hz");
}

TEST(TvbCheck, NegativeFrequency) {
  ExpectOnly(File(image::Record(7, image::Negative(-1))), Severity::kBroken, 19, 1,
             "frequency of -1; expected 0 to 2147483647 Hz");
}

TEST(TvbCheck, NumbersOfMoreThan32Bits) {
  ExpectOnly(File(image::Record(7, {0x80, 0x80, 0x80, 0x80, 0x10})), Severity::kBroken, 19, 1,
             "frequency of a number of more than 32 bits");
}

TEST(TvbCheck, NumbersInALongerFormThanNeeded) {
  ExpectOnly(File(image::Record(7, {0x80, 0x00})), Severity::kWarning, 16, 1,
             "the number at 0x13 takes 2 bytes; a shorter form says the same");
  ExpectOnly(File({'^', 0x88, 0x00, 19}), Severity::kWarning, 16, 1, "the length at 0x11");
}

TEST(TvbCheck, SkippedRecords) {
  const Bytes next = image::Nothing();
  ExpectOnly(File({'^', 7, 19}), Severity::kBroken, 17, 1, "expected a multiple of 8 from 8 on");
  ExpectOnly(File(image::Join({{'^', 12, 19}, next})), Severity::kBroken, 17, 1,
             "a length of 12 bits");
  ExpectOnly(File({'^', 40, 19, 1}), Severity::kBroken, 17, 1, "goes 3 bytes past the end");
  ExpectOnly(File(image::RecordOfLength(image::Negative(-8), 19, {})), Severity::kBroken, 17, 1,
             "negative length -8");
}

TEST(TvbCheck, ProgressRunsToTheEnd) {
  const Bytes file = File(image::Join({image::Nothing(), image::Nothing()}));
  std::vector<uint64_t> seen;
  tvb::CheckImage(
      file, [](const Finding &) {}, [&](uint64_t at) { seen.push_back(at); });
  EXPECT_EQ(seen, (std::vector<uint64_t>{19, 22}));
}

}  // namespace
