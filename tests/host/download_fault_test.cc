// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Downloads to targets that are at fault, and files that do not give the target its time.
#include "bench.h"
#include "script.h"
#include "session.h"

namespace {

using bench::Bench;
using script::Bits;
using script::Part;
using script::Place;
using script::Script;
using session::Messages;

class DownloadFault : public shim::Test {
 protected:
  DownloadFault() {
    AllowLeaks(shim::kAnyLeaks);  // a stopped download's IDCODE string, and the place's block
  }

  // The program file for the place, and the scans it must make.
  Script Program() {
    Script script(place_);
    script::ProgramPart(script, place_, part_, rows_);
    return script;
  }

  // A download that a verification stops: what was scanned is the beginning of what should be.
  void ExpectRefused(const tvb::Buffer &file) {
    EXPECT_EQ(bench_->Download(file), 0);
    const Messages &said = shim::Messages();
    ASSERT_GE(said.size(), 2u);
    EXPECT_EQ(said[said.size() - 2], session::VerifyFailed());
    EXPECT_EQ(said.back(), session::Ended(-17));
    EXPECT_EQ(g_status, 0u);
  }

  // The target is sound again: the next download programs it.
  void ExpectRecovered() {
    bench_->chain().ClearFaults();
    Script script = Program();
    EXPECT_EQ(bench_->Download(script.Finish()), 1);
    EXPECT_EQ(bench_->Memory(place_.level), rows_);
  }

  const Place place_ = {2, 3};
  const Part part_;
  const script::Lines rows_ = script::RowsOf(part_);
  std::optional<Bench> bench_{script::ChainText(place_, part_)};
};

TEST_F(DownloadFault, TdoStuckAt0) {
  bench_->chain().SetFaults("tdo-stuck-0");
  ExpectRefused(Program().Finish());
  EXPECT_EQ(Messages(shim::Messages().begin() + 1, shim::Messages().begin() + 6),
            session::Idcode("00000000"));
  ExpectRecovered();
}

TEST_F(DownloadFault, TdoStuckAt1) {
  bench_->chain().SetFaults("tdo-stuck-1");
  ExpectRefused(Program().Finish());
  EXPECT_EQ(Messages(shim::Messages().begin() + 1, shim::Messages().begin() + 6),
            session::Idcode("ffffffff"));
  ExpectRecovered();
}

// Each DR scan in turn, at its first bit, one in the middle, and its last one.
TEST_F(DownloadFault, FlippedBitIsSeenWhereItIsCompared) {
  const Script clean = [&] {
    Script script = Program();
    script.Finish();
    return script;
  }();
  const tvb::Buffer file = Program().Finish();
  uint32_t number = 0;  // of DR scans
  size_t refused = 0;
  for (size_t i = 0; i < clean.scans().size(); ++i) {
    const std::string &scan = clean.scans()[i];
    if (scan[0] == 'I') {
      continue;
    }
    ++number;
    // Compared: the IDCODE, the status and the rows that are read, but not the bypass bits.
    const size_t bits =
        scan.find(' ', 3) == std::string::npos ? scan.size() - 3 : scan.find(' ', 3) - 3;
    for (const size_t bit : {size_t{0}, size_t{1}, bits / 2, bits - 2, bits - 1}) {
      const std::string fault = "flip=" + std::to_string(number) + ":" + std::to_string(bit);
      SCOPED_TRACE(fault);
      bench_->chain().ClearFaults();
      bench_->chain().SetFaults(fault);
      shim::ResetDriverGlobals();  // a stopped file's pads would displace the IDCODE read
      const bool checked = number == 2 || number == 3 || number >= 10;
      const bool target = bit >= 1 && bit <= bits - 2;
      if (checked && target) {
        ExpectRefused(file);
        EXPECT_EQ(bench_->Scans().size(), i) << "the scan at fault is not finished";
        ++refused;
      } else {
        EXPECT_EQ(bench_->Download(file), 1);
        EXPECT_EQ(bench_->Scans(), clean.scans());
      }
    }
  }
  EXPECT_EQ(refused, 6u * 3) << "IDCODE, status and four rows, three bits of each";
  ExpectRecovered();
}

TEST_F(DownloadFault, EachRowThatDoesNotTake) {
  for (uint32_t row = 0; row < part_.rows; ++row) {
    bench_->chain().ClearFaults();
    bench_->chain().SetFaults("dead-row=2:" + std::to_string(row));
    ExpectRefused(Program().Finish());
  }
  ExpectRecovered();
}

TEST_F(DownloadFault, EachDeviceMissing) {
  for (uint32_t device = 1; device <= 3; ++device) {
    bench_->chain().ClearFaults();
    bench_->chain().SetFaults("missing=" + std::to_string(device));
    ExpectRefused(Program().Finish());
  }
  ExpectRecovered();
}

TEST_F(DownloadFault, EraseThatIsGivenTooLittleTime) {
  Part hasty = part_;
  hasty.erase_clocks -= 1;
  Script script(place_);
  script::ProgramPart(script, place_, hasty, rows_);
  ExpectRefused(script.Finish());
  ExpectRecovered();
}

TEST_F(DownloadFault, RowThatIsGivenTooLittleTime) {
  Part hasty = part_;
  hasty.program_clocks -= 1;
  Script script(place_);
  script::ProgramPart(script, place_, hasty, rows_);
  ExpectRefused(script.Finish());
  ExpectRecovered();
}

TEST_F(DownloadFault, WrongPart) {
  bench_.emplace("bypass;idcode=0x0A014C36,part=4x24;bypass");
  EXPECT_EQ(bench_->Download(Program().Finish()), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-17));
  EXPECT_TRUE(bench::Said(shim::Log(43, 2, "36")));
  EXPECT_EQ(bench_->Scans().size(), 4u) << "nothing was programmed";
}

TEST_F(DownloadFault, MismatchInTheLastRecordIsNotSeen) {
  for (const bool guarded : {true, false}) {
    Script script(place_);
    script.Pads(place_);
    script.Instruction(SIM_IDCODE_6);
    script.Verify(Bits(32, '1'), script::BitsOf(part_.idcode ^ 1u << 31, 32));
    const tvb::Buffer guarded_file = script.Finish();
    // The closing record is the last four bytes.
    const tvb::Buffer file(guarded_file.begin(), guarded_file.end() - (guarded ? 0 : 4));
    EXPECT_EQ(bench_->Download(file), guarded ? 0 : 1);
    EXPECT_TRUE(bench::Said(session::VerifyFailed()));
    EXPECT_EQ(shim::Messages().back(), session::Ended(guarded ? -17 : 0));
  }
}

TEST_F(DownloadFault, MismatchLeavesTckLowAndDrivesNothingMore) {
  Script script(place_);
  script.Pads(place_);
  script.Instruction(SIM_IDCODE_6);
  script.Verify(Bits(32, '0'), script::BitsOf(part_.idcode ^ 4, 32));
  script.Instruction(SIM_BYPASS);
  bench_->pins().Record(true);
  EXPECT_EQ(bench_->Download(script.Finish()), 0);
  // The walk and a header of one bit, then bits 0, 1 and 2, which it stops at.
  const std::string tail =
      "K0 M1 K1 K0 M0 K1 K0 M0 K1 K0 M0 K1 "
      "K0 I0 M0 R1 K1 K0 I0 R0 K1 K0 I0 R1";
  const std::string text = bench_->pins().Text();
  ASSERT_GE(text.size(), tail.size());
  EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
  EXPECT_EQ(bench_->chain().state(), SIM_SHIFT_DR);
  EXPECT_EQ(sim_chain_read(bench_->chain().get(), SIM_TCK), 0);
}

TEST_F(DownloadFault, ReadCallbackThatGivesMoreThanOneBit) {
  // A high line that reads 2 never equals an expected 1; a high line that reads 0x101 does.
  for (const int high : {2, 0x101}) {
    bench_->pins().OnRead([&] { return bench_->chain().Tdo() ? high : 0; });
    EXPECT_EQ(bench_->Download(Program().Finish()), high == 2 ? 0 : 1);
  }
}

}  // namespace
