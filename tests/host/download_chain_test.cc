// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Whole downloads that program a part, in chains of one to eight devices and in every encoding.
#include "bench.h"
#include "script.h"
#include "session.h"

namespace {

using bench::Bench;
using script::Part;
using script::Place;
using script::Script;
using session::Messages;

class DownloadChain : public shim::Test {
 protected:
  // Programs a part and checks all that there is to see.
  void ExpectProgrammed(const Place &place, const tvb::FileHeader &header = {},
                        const tvb::BlockChoice &choice = {}) {
    SCOPED_TRACE("level " + std::to_string(place.level) + " of " + std::to_string(place.total));
    const Part part;
    const script::Lines rows = script::RowsOf(part, place.total * 8 + place.level);
    Bench bench(script::ChainText(place, part));
    Script script(place, header, choice);
    script::ProgramPart(script, place, part, rows);
    const tvb::Buffer file = script.Finish();

    EXPECT_EQ(bench.Download(file), 1);
    EXPECT_EQ(bench.Memory(place.level), rows);
    EXPECT_EQ(bench.Scans(), script.scans());
    EXPECT_EQ(g_cur_level, place.level);
    EXPECT_EQ(g_total_level, place.total);
    const uint32_t size = static_cast<uint32_t>(file.size());
    EXPECT_EQ(shim::Messages(), session::Join({{session::Started(size)},
                                               session::Idcode("0a014c35"),
                                               {session::Done(size), session::Ended(0)}}));
    EXPECT_EQ(bench.chain().state(), SIM_RUN_TEST_IDLE);
    leaks_ += 1;  // the block that told the place
    AllowLeaks(leaks_);
    shim::ResetDriverGlobals();
    EXPECT_EQ(shim::LiveRequests(), leaks_);
  }

  size_t leaks_ = 0;
};

TEST_F(DownloadChain, EveryPlaceInChainsOfOneToEight) {
  for (uint32_t total = 1; total <= 8; ++total) {
    for (uint32_t level = 1; level <= total; ++level) {
      ExpectProgrammed({level, total});
    }
  }
}

TEST_F(DownloadChain, BlocksWithoutModeBytes) {
  ExpectProgrammed({2, 3}, tvb::FileHeader::Plain());
}

TEST_F(DownloadChain, EveryEncoding) {
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    SCOPED_TRACE(row.name);
    ExpectProgrammed({2, 3}, {}, tvb::BlockChoice::As(row.encoding));
  }
  for (int k = 0; k < 4; ++k) {
    SCOPED_TRACE("k " + std::to_string(k));
    ExpectProgrammed({2, 3}, {}, tvb::BlockChoice::With(tvb::Encoding::kLzw, k));
  }
}

TEST_F(DownloadChain, NeighboursThatCouldBeProgrammedAreNot) {
  const Place place = {2, 3};
  const Part part;
  const std::string neighbour = "idcode=0x13,instruction=224,part=4x24,erase=1,program=1";
  Bench bench(neighbour + ";idcode=0x0A014C35,part=4x24,erase=100,program=20;" + neighbour);
  for (const uint32_t device : {1, 3}) {
    for (uint32_t row = 0; row < 4; ++row) {
      bench.chain().SetRow(device, row, script::RowsOf(part, device)[row]);
    }
  }
  Script script(place);
  script::ProgramPart(script, place, part, script::RowsOf(part, 77));
  EXPECT_EQ(bench.Download(script.Finish()), 1);
  EXPECT_EQ(bench.Memory(2), script::RowsOf(part, 77));
  EXPECT_EQ(bench.Memory(1), script::RowsOf(part, 1));
  EXPECT_EQ(bench.Memory(3), script::RowsOf(part, 3));
  AllowLeaks(1);
}

TEST_F(DownloadChain, LargeRows) {
  Part part;
  part.rows = 3;
  part.row_bits = 20011;
  const Place place = {2, 3};
  for (int mode = 0; mode <= 4; ++mode) {
    const script::Lines rows = script::RowsOf(part, static_cast<uint32_t>(mode));
    Bench bench(script::ChainText(place, part));
    Script script(place, {}, tvb::BlockChoice::As(static_cast<tvb::Encoding>(mode)));
    script::ProgramPart(script, place, part, rows);
    EXPECT_EQ(bench.Download(script.Finish()), 1) << mode;
    EXPECT_TRUE(bench.Memory(2) == rows) << mode;
    EXPECT_TRUE(bench.Scans() == script.scans()) << mode;
    EXPECT_GE(g_vector_size, 20011u + 7) << mode;
  }
  AllowLeaks(5);
}

TEST_F(DownloadChain, InstructionsThroughPads) {
  for (uint32_t total = 1; total <= 4; ++total) {
    for (uint32_t level = 1; level <= total; ++level) {
      const Place place = {level, total};
      Bench bench(script::ChainText(place, Part{}));
      Script script(place);
      script.Pads(place);
      script.InstructionThroughPads(SIM_IDCODE_6);
      script.Verify(script::Bits(32, '1'), script::BitsOf(Part{}.idcode, 32));
      EXPECT_EQ(bench.Download(script.Finish()), 1) << level << " of " << total;
      EXPECT_EQ(bench.Scans(), script.scans()) << level << " of " << total;
      EXPECT_EQ(bench.chain().instruction(level), SIM_IDCODE_6);
      shim::ResetDriverGlobals();
    }
  }
  AllowLeaks(10);
}

}  // namespace
