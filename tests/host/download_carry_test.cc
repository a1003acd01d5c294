// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Several downloads in a row: what carries over from one to the next, and what does not.
#include "bench.h"
#include "image.h"
#include "script.h"
#include "session.h"

namespace {

using bench::Bench;
using bench::Bytes;
using image::Frequency;
using image::Header;
using image::Join;
using image::Nothing;
using image::Pad;
using image::Record;
using image::RunTest;
using image::Sdr;
using image::Sir;
using image::WaitField;
using script::Bits;
using script::Part;
using script::Place;
using script::Script;
using session::Messages;

class DownloadCarry : public shim::Test {
 protected:
  // Downloads records behind a header and a record that says nothing of the chain.
  s32 Play(const Bytes &records) {
    return bench_->Download(Join({Header(), Nothing(), records}));
  }

  // One scan of the last download; the first two read the IDCODE.
  std::string Scan(size_t number) {
    const bench::Lines scans = bench_->Scans();
    return number < scans.size() ? scans[number] : "none";
  }

  // The clocks that the last scan of the download was followed by.
  uint64_t IdleClocks() {
    return bench_->chain().Scans().back().idle_clocks;
  }

  const Bytes scan_ = Sdr(8, {0x55});
  const Bytes wait_ = RunTest(WaitField(1010));  // 1000 microseconds
  std::optional<Bench> bench_{"idcode=0x0A014C35,part=2x8"};
};

TEST_F(DownloadCarry, ALengthThatNoVectorHasDoesNotStopLaterDownloads) {
  EXPECT_EQ(Play(Record(12, {0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0x00, 0x17})), 0);
  EXPECT_EQ(g_hir_len, 0xFFFFFFFFu);
  EXPECT_EQ(Play(scan_), 1);
}

TEST_F(DownloadCarry, LowestFrequencyOfAllFilesWins) {
  EXPECT_EQ(Play(Join({Frequency(2000000), Frequency(5000000), scan_, wait_})), 1);
  EXPECT_EQ(IdleClocks(), 2000u);
  EXPECT_EQ(Play(Join({Frequency(4000000), scan_, wait_})), 1);
  EXPECT_EQ(g_freq, 2000000u);
  EXPECT_EQ(IdleClocks(), 2000u);
  EXPECT_EQ(Play(Join({Frequency(500000), scan_, wait_})), 1);
  EXPECT_EQ(IdleClocks(), 500u);
  EXPECT_EQ(Play(Join({scan_, wait_})), 1);
  EXPECT_EQ(IdleClocks(), 500u);
}

TEST_F(DownloadCarry, DefaultFrequencyStays) {
  EXPECT_EQ(Play(Join({scan_, wait_})), 1);
  EXPECT_EQ(g_freq, 1000000u);
  EXPECT_EQ(Play(Join({Frequency(3000000), scan_, wait_})), 1);
  EXPECT_EQ(IdleClocks(), 1000u);
  EXPECT_EQ(Play(Join({Frequency(0), Frequency(3000000), scan_, wait_})), 1);
  EXPECT_EQ(IdleClocks(), 3000u);
}

TEST_F(DownloadCarry, FrequencyOfAStoppedFileStaysToo) {
  EXPECT_EQ(Play(Join({Frequency(700000), Record(2, {})})), 0);
  EXPECT_EQ(Play(Join({Frequency(900000), scan_, wait_})), 1);
  EXPECT_EQ(IdleClocks(), 700u);
  AllowLeaks(1);  // the first IDCODE string
}

TEST_F(DownloadCarry, IdcodeInstruction224Stays) {
  bench_.emplace("idcode=0x00001234,instruction=224");
  EXPECT_EQ(bench_->Download(Join({Header(), Sir(8, {0x07})})), 1);
  EXPECT_EQ(Scan(0), "IR 00000111");
  EXPECT_TRUE(bench::Said(shim::Log(43, 2, "34")));
  EXPECT_EQ(bench_->Download(Join({Header(), Sir(8, {0x60})})), 1);
  EXPECT_EQ(Scan(0), "IR 00000111");
  EXPECT_EQ(g_idcode_pub, 224u);
  AllowLeaks(2);
}

TEST_F(DownloadCarry, HirBytesStayUntilTheNextHirRecord) {
  EXPECT_EQ(Play(Pad(image::kHir, 8, {0x3C})), 1);
  ASSERT_NE(g_hir_data, nullptr);
  EXPECT_EQ(session::Content(g_hir_data, 2), (Bytes{0x3C, 0x00}));
  EXPECT_EQ(shim::LiveRequests(), 1u);
  EXPECT_EQ(Play({}), 1);
  EXPECT_EQ(shim::LiveRequests(), 1u);
  EXPECT_EQ(Play(Pad(image::kHir, 3, {0x20})), 1);
  EXPECT_EQ(session::Content(g_hir_data, 2), (Bytes{0x20, 0x00}));
  EXPECT_EQ(g_hir_len, 3u);
  EXPECT_EQ(Play(Pad(image::kHir, 0)), 1);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(DownloadCarry, LengthsOutliveTheirVectorsAndDisplaceTheData) {
  EXPECT_EQ(Play(Join({Pad(image::kHdr, 2, {0x00}), Sdr(4, {0xF0})})), 1);
  EXPECT_EQ(Scan(2), "DR 111111") << "two bits at TDI's last level, four of data";
  EXPECT_EQ(g_hdr_len, 2u);
  EXPECT_EQ(g_hdr_vector, nullptr);
  // The next file sets none: its vectors are of 4 and of 32 bits, the range begins two bits in.
  EXPECT_EQ(Play(Sdr(4, {0x50})), 1);
  EXPECT_EQ(Scan(2), "DR 1101") << "TDI is driven from the third bit on";
  EXPECT_TRUE(
      bench::Said(shim::Log(43, 2, "Error: CHIP IDCODE is invalid current size is 30\r\n")));
  // A record of no bits ends that.
  EXPECT_EQ(Play(Join({Pad(image::kHdr, 0), Sdr(4, {0x50})})), 1);
  EXPECT_EQ(Scan(2), "DR 0101");
}

TEST_F(DownloadCarry, StoppedFileLeavesItsPadsInForce) {
  EXPECT_EQ(Play(Join({Pad(image::kTdr, 3, {0xFF}), Record(2, {})})), 0);
  EXPECT_EQ(g_tdr_len, 3u);
  EXPECT_NE(g_tdr_vector, nullptr);
  EXPECT_EQ(Play(Sdr(4, {0x10})), 1);
  EXPECT_EQ(Scan(2), "DR 0001111") << "three bits behind it, at TDI's last level";
  EXPECT_EQ(g_tdr_vector, nullptr) << "now released";
  AllowLeaks(1);  // the first IDCODE string
}

TEST_F(DownloadCarry, PadWhoseVectorCannotBeHadLeavesItsLength) {
  const Bytes huge = image::RecordOfLength(
      {8}, image::kHdr, Join({image::Number(0x6EEFFFFF), {image::kTagTdo, image::kTagEnd}}));
  EXPECT_EQ(Play(huge), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-2));
  EXPECT_EQ(g_hdr_len, 0x6EEFFFFFu);
  EXPECT_EQ(g_hdr_vector, nullptr);
  // It displaces the data of later scans, as any length that outlives its vector, until it is set.
  EXPECT_EQ(Play(Join({Pad(image::kHdr, 0), Sdr(4, {0x50})})), 1);
  EXPECT_TRUE(bench::Said(session::NoIdcode()));
  EXPECT_EQ(bench_->Scans().back(), "DR 0101");
}

TEST_F(DownloadCarry, ImpossibleShiftDoesNotEndLaterDownloads) {
  EXPECT_EQ(Play(image::Shift(image::kSdr, 0x7FFFFFFF, {})), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-2));
  EXPECT_EQ(Play(Sdr(4, {0x50})), 1);
  EXPECT_EQ(Scan(2), "DR 0101");
}

TEST_F(DownloadCarry, VectorGrowsAndItsSizeStays) {
  EXPECT_EQ(Play({}), 1);
  EXPECT_EQ(shim::Allocations()[0].size, 3200u);
  EXPECT_EQ(Play(Sdr(8000, Bytes(1000, 0xA5))), 1);
  EXPECT_EQ(g_vector_size, 8005u);
  const size_t first = shim::Allocations().size();
  EXPECT_EQ(Play({}), 1);
  EXPECT_EQ(shim::Allocations()[first].size, 8005u);
}

TEST_F(DownloadCarry, CompressionByteIsEachFilesOwn) {
  EXPECT_EQ(bench_->Download(
                Join({Header(0), Nothing(),
                      image::Shift(image::kSdr, 24, image::Field(image::kTagTdi, {2, 1, 0xA0}))})),
            1);
  EXPECT_EQ(Scan(2), "DR 101010101010101010101010");
  EXPECT_EQ(Play(Sdr(24, {0x02, 0x01, 0xA0})), 1);
  EXPECT_EQ(Scan(2), "DR 000000100000000110100000");
}

TEST_F(DownloadCarry, RunFlagIsSetAnew) {
  EXPECT_EQ(Play(Join({Sdr(1, {0x00}, {0x00}, {0x80}), Nothing()})), 0);
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(Play(Nothing()), 1);
  EXPECT_EQ(g_status, 1u);
  AllowLeaks(1);
}

TEST_F(DownloadCarry, EachStopDropsOneIdcodeString) {
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Play(Record(2, {})), 0);
  }
  EXPECT_EQ(Play({}), 1);
  EXPECT_EQ(shim::LiveRequests(), 5u) << "overwritten without being freed";
  AllowLeaks(5);
}

TEST_F(DownloadCarry, UnloadFreesWhatAStoppedFileLeft) {
  EXPECT_EQ(Play(Join({Pad(image::kHir, 8, {1}), Pad(image::kHdr, 8, {2}), Pad(image::kTir, 8, {3}),
                       Pad(image::kTdr, 8, {4}), Record(2, {})})),
            0);
  EXPECT_EQ(shim::LiveRequests(), 10u) << "four pairs, the vector and the IDCODE string";
  cleanup_module();
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(DownloadCarry, ManyDownloadsOfOneProgramFile) {
  const Place place = {2, 3};
  const Part part;
  bench_.emplace(script::ChainText(place, part));
  for (uint32_t i = 0; i < 20; ++i) {
    Script script(place, {}, tvb::BlockChoice::As(static_cast<tvb::Encoding>(i % 5)));
    script::ProgramPart(script, place, part, script::RowsOf(part, i));
    script.Pads({1, 1});  // else the lengths would displace the next file's IDCODE read
    EXPECT_EQ(bench_->Download(script.Finish()), 1) << i;
    EXPECT_EQ(bench_->Memory(2), script::RowsOf(part, i)) << i;
    EXPECT_EQ(bench_->Scans(), script.scans()) << i;
  }
  EXPECT_EQ(shim::LiveRequests(), 20u) << "the block that told the place, each time";
  AllowLeaks(20);
}

}  // namespace
