// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Whole downloads of files with loops, run-tests, frequencies and records that do nothing.
#include "bench.h"
#include "script.h"
#include "session.h"

namespace {

using bench::Bench;
using script::Bits;
using script::Part;
using script::Place;
using script::Script;

class DownloadRecord : public shim::Test {
 protected:
  DownloadRecord() {
    AllowLeaks(1);  // the block that told the place
  }

  // Downloads and compares every scan, and the clocks between them, with what the file says.
  void ExpectScans(Script &script) {
    const tvb::Buffer file = script.Finish();
    EXPECT_EQ(bench_.Download(file), 1);
    EXPECT_EQ(bench_.Scans(), script.scans());
    EXPECT_EQ(shim::Messages()[6], session::Done(static_cast<uint32_t>(file.size())));
  }

  const Place place_ = {2, 3};
  Bench bench_{script::ChainText(place_, Part{})};
};

TEST_F(DownloadRecord, LoopOfShiftsAndRunTests) {
  Script script(place_);
  script.Pads(place_);
  script.Instruction(SIM_STATUS);
  script.Loop(5, [&] {
    script.Data("10110");
    script.Idle(7);
    script.Data("0");
    script.Data("111111111");
  });
  script.Idle(3);
  script.Instruction(SIM_BYPASS);
  ExpectScans(script);
}

TEST_F(DownloadRecord, LoopsOfEveryCount) {
  Script script(place_);
  for (const uint32_t count : {1, 2, 3, 100}) {
    script.Instruction(SIM_BYPASS);
    script.Loop(count, [&] { script.Data(script::BitsOf(count, 7)); });
  }
  ExpectScans(script);
}

TEST_F(DownloadRecord, LoopThatChangesPads) {
  Script script(place_);
  script.Instruction(SIM_BYPASS);
  script.Loop(3, [&] {
    script.Pads({1, 3});
    script.Data("1010");
    script.Pads({3, 3});
    script.Data("0101");
    script.Pads({1, 1});
    script.Data("1");
  });
  ExpectScans(script);
}

TEST_F(DownloadRecord, ProgramsEqualRowsInALoop) {
  const Part part;
  const Bits row = script::RowsOf(part)[0];
  Script script(place_);
  script.Pads(place_);
  script.Instruction(SIM_ENABLE);
  script.Instruction(SIM_ERASE);
  script.Idle(part.erase_clocks);
  script.Instruction(SIM_PROGRAM);
  script.Loop(part.rows, [&] {
    script.Data(row);
    script.Idle(part.program_clocks);
  });
  script.Instruction(SIM_ADDRESS);
  script.Data(Bits(32, '0'));
  script.Instruction(SIM_READ);
  script.Loop(part.rows, [&] { script.Verify(Bits(part.row_bits, '1'), row); });
  ExpectScans(script);
  EXPECT_EQ(bench_.Memory(2), script::Lines(4, row));
}

TEST_F(DownloadRecord, ReservedRecordsAreSkipped) {
  Script script(place_);
  script.Instruction(SIM_BYPASS);
  for (const uint8_t opcode : {1, 5, 6, 19}) {
    for (const size_t size : {0, 1, 15, 2000}) {
      script.Record([&] { script.writer().Reserved(opcode, tvb::Buffer(size, '^')); });
      script.Data("1100");
    }
  }
  ExpectScans(script);
}

TEST_F(DownloadRecord, RunTestsOfCountsAndTimes) {
  using std::chrono::microseconds;
  Script script(place_);
  script.Instruction(SIM_BYPASS);
  script.Idle(1);
  script.Instruction(SIM_BYPASS);
  script.Idle(32758);
  script.Instruction(SIM_BYPASS);
  script.Idle(32759);
  script.Instruction(SIM_BYPASS);
  script.Idle(70000);
  script.Instruction(SIM_BYPASS);
  // At 1 MHz one clock a microsecond.
  script.Record([&] { script.writer().RunTest(microseconds(1234)); });
  script.ExpectIdle(1234);
  script.Instruction(SIM_BYPASS);
  script.Record([&] { script.writer().RunTest(microseconds(40000)); });
  script.ExpectIdle(40000);
  script.Instruction(SIM_BYPASS);
  script.Record([&] { script.writer().RunTest(11, microseconds(100)); });
  script.ExpectIdle(111);
  ExpectScans(script);
}

TEST_F(DownloadRecord, TimesFollowTheFrequency) {
  using std::chrono::microseconds;
  Script script(place_);
  for (const uint32_t hertz : {2000000, 50000, 3000}) {
    script.Instruction(SIM_BYPASS);
    script.Record([&] { script.writer().FreshFrequency(hertz); });
    script.Record([&] { script.writer().RunTest(microseconds(20000)); });
    script.ExpectIdle(hertz / 50);
  }
  ExpectScans(script);
  EXPECT_EQ(g_freq, 3000u);
}

TEST_F(DownloadRecord, RunTestTimeIsMadeUpInUnitsOf100Microseconds) {
  Script script(place_);
  script.Idle(1000);
  script.Idle(50);
  // 1001 microseconds and 51, none of which had passed: 11 units and 1.
  EXPECT_EQ(bench_.Download(script.Finish()), 1);
  EXPECT_EQ(shim::Delays(), std::vector<unsigned long>(12, 429500));
}

TEST_F(DownloadRecord, StrayBytesEndTheFileWell) {
  Script script(place_);
  script.Instruction(SIM_BYPASS);
  tvb::Buffer file = script.Finish();
  const uint32_t size = static_cast<uint32_t>(file.size());
  file.insert(file.end(), {0x00, '^', 0x08, 0x02});
  EXPECT_EQ(bench_.Download(file), 1);
  EXPECT_EQ(shim::Messages()[6], session::Done(size + 1));
}

TEST_F(DownloadRecord, ShiftOf100000Bits) {
  Script script(place_, tvb::FileHeader::Plain());
  script.Instruction(SIM_BYPASS);
  Bits bits;
  for (uint32_t i = 0; i < 100000; ++i) {
    bits += i * i / 7 % 3 == 0 ? '1' : '0';
  }
  script.Data(bits);
  EXPECT_EQ(bench_.Download(script.Finish()), 1);
  EXPECT_TRUE(bench_.Scans() == script.scans());
}

}  // namespace
