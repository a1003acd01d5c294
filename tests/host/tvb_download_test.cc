// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Files of the writer, played by the driver from end to end.
#include "host.h"
#include "shim.h"
#include "tvb/writer.h"
#include "tvb_data.h"

namespace {

using tvb::BlockChoice;
using tvb::Buffer;
using tvb::Encoding;
using tvb::Writer;
using namespace std::chrono_literals;

class TvbDownload : public shim::Test {
 protected:
  TvbDownload() {
    pins_.Record(false);
    // The scan for the target keeps the block it decoded, and an IDCODE read the one before it.
    AllowLeaks(shim::kAnyLeaks);
  }

  s32 Play(const Buffer &file) {
    return TvbToVec(static_cast<download_context *>(pins_.context()), file.data(),
                    static_cast<u32>(file.size()));
  }

  // How many lines are driven and read by a file that holds what `write` puts between an opening
  // and the end, more than by one of the opening alone.
  template <typename Write>
  uint64_t Calls(Write write) {
    return CallsOf(write) - CallsOf([](Writer &) {});
  }

  shim::Pins pins_;

 private:
  template <typename Write>
  uint64_t CallsOf(Write write) {
    Writer writer;
    writer.Opening(0, 0);
    write(writer);
    uint64_t before = pins_.writes() + pins_.reads();
    EXPECT_EQ(Play(writer.Finish()), 1);
    return pins_.writes() + pins_.reads() - before;
  }
};

TEST_F(TvbDownload, TheOpeningTellsWhereTheTargetSits) {
  for (int mode = 0; mode <= 4; ++mode) {
    for (uint32_t before : {0, 1, 2, 9}) {
      for (uint32_t after : {0, 1, 5}) {
        Writer writer;
        writer.Encode(BlockChoice::As(static_cast<Encoding>(mode)));
        writer.Opening(before, after);
        EXPECT_EQ(Play(writer.Finish()), 1);
        EXPECT_EQ(g_cur_level, before + 1) << "mode " << mode;
        EXPECT_EQ(g_total_level, before + 1 + after) << "mode " << mode;
        EXPECT_EQ(g_idcode_pub, 6u);
      }
    }
  }
}

TEST_F(TvbDownload, TheOpeningCanChooseTheOtherIdcodeInstruction) {
  Writer writer(tvb::FileHeader::Plain());
  writer.Opening(3, 4, 0xE0);
  EXPECT_EQ(Play(writer.Finish()), 1);
  EXPECT_EQ(g_cur_level, 4u);
  EXPECT_EQ(g_total_level, 8u);
  EXPECT_EQ(g_idcode_pub, 224u);
}

// TDO reads 0 where 1 is expected, in the last record before the end.
Writer MismatchAtTheEnd() {
  Writer writer;
  writer.Opening(0, 0);
  writer.Sdr(8, Buffer{0x00}, Buffer{0x01}, Buffer{0xFF});
  return writer;
}

TEST_F(TvbDownload, AMismatchInTheLastRecordFailsTheDownload) {
  EXPECT_EQ(Play(MismatchAtTheEnd().Finish()), 0);
}

TEST_F(TvbDownload, AMismatchGoesUnseenWithoutTheClosingRecord) {
  EXPECT_EQ(Play(MismatchAtTheEnd().FinishUnguarded()), 1);
}

TEST_F(TvbDownload, TheClosingRecordTouchesNoLineAndLeavesNoTrace) {
  auto play = [&](bool guarded) {
    shim::ResetDriverGlobals();  // the lengths set below would stay for the next file
    Writer writer;
    writer.Opening(1, 0);
    writer.FreshFrequency(77000);
    writer.Hir(8, Buffer{0xFF});
    writer.Tdr(1, Buffer{0x80});
    uint64_t before = pins_.writes() + pins_.reads();
    EXPECT_EQ(Play(guarded ? writer.Finish() : writer.FinishUnguarded()), 1);
    EXPECT_EQ(g_freq, 77000u);
    EXPECT_EQ(g_hir_len, 8u);
    EXPECT_EQ(g_tdr_len, 1u);
    EXPECT_EQ(g_hdr_len, 0u);
    EXPECT_EQ(g_tir_len, 0u);
    return pins_.writes() + pins_.reads() - before;
  };
  EXPECT_EQ(play(false), play(true));
}

TEST_F(TvbDownload, AFreshFrequencyForgetsEarlierFiles) {
  auto play = [&](auto write) {
    Writer writer;
    writer.Opening(0, 0);
    write(writer);
    EXPECT_EQ(Play(writer.Finish()), 1);
    return g_freq;
  };
  EXPECT_EQ(play([](Writer &w) { w.Frequency(1000); }), 1000u);
  EXPECT_EQ(play([](Writer &w) { w.Frequency(5000); }), 1000u);
  EXPECT_EQ(play([](Writer &w) { w.FreshFrequency(5000); }), 5000u);
  EXPECT_EQ(play([](Writer &w) { w.Frequency(0); }), 0u);
}

TEST_F(TvbDownload, ClearedPadsLeaveNoLengths) {
  Writer writer;
  writer.Opening(1, 1);
  writer.Hir(8, Buffer{0xFF});
  writer.Tir(8, Buffer{0xFF});
  writer.Hdr(1, Buffer{0x80});
  writer.Tdr(1, Buffer{0x80});
  writer.Sdr(12, Buffer{0x12, 0x30});
  writer.ClearPads();
  EXPECT_EQ(Play(writer.Finish()), 1);
  EXPECT_EQ(g_hir_len + g_tir_len + g_hdr_len + g_tdr_len, 0u);
}

// Each period of TCK is two writes; a run-test drives TDI and TMS once more.
TEST_F(TvbDownload, RunTestsClockWhatTheySay) {
  EXPECT_EQ(Calls([](Writer &w) { w.RunTest(1); }), 2u + 2);
  EXPECT_EQ(Calls([](Writer &w) { w.RunTest(32758); }), 2u + 2 * 32758);
  EXPECT_EQ(Calls([](Writer &w) { w.RunTest(32759); }), 2u + 2 * 32759);
  EXPECT_EQ(Calls([](Writer &w) {
              w.FreshFrequency(2000000);
              w.RunTest(5, 40001us);
            }),
            2u + 2 * (80002 + 5));
}

TEST_F(TvbDownload, LoopsPlayTheirBodyAsOftenAsTheySay) {
  uint64_t once = Calls([](Writer &w) { w.Sdr(40, Buffer(5, 0x81), Buffer(5), Buffer(5, 0xFF)); });
  for (uint32_t count : {1, 2, 7}) {
    EXPECT_EQ(Calls([&](Writer &w) {
                w.BeginLoop(count);
                w.Sdr(40, Buffer(5, 0x81), Buffer(5), Buffer(5, 0xFF));
                w.EndLoop();
              }),
              count * once);
  }
}

TEST_F(TvbDownload, ReservedRecordsAreSkipped) {
  EXPECT_EQ(Calls([](Writer &w) {
              for (int opcode : {1, 5, 6, 19}) {
                w.Reserved(static_cast<uint8_t>(opcode), tvb_data::Random(300, 8));
              }
            }),
            0u);
}

// What goes out on TDI is the data, first byte's most significant bit first, in every encoding.
TEST_F(TvbDownload, DataGoesOutInOrderInEveryEncoding) {
  std::string sent;
  pins_.OnWrite([&](shim::Line line, bool level) {
    if (line == shim::kTdi) {
      sent += level ? '1' : '0';
    }
  });
  Buffer data = tvb_data::TextLike(125, 6);
  std::string expected;
  for (size_t bit = 0; bit < 1000; ++bit) {
    expected += data[bit / 8] >> (7 - bit % 8) & 1 ? '1' : '0';
  }
  for (int mode = -1; mode <= 4; ++mode) {
    Writer writer(mode < 0 ? tvb::FileHeader::Plain() : tvb::FileHeader());
    if (mode >= 0) {
      writer.Encode(BlockChoice::As(static_cast<Encoding>(mode)));
    }
    writer.Opening(0, 0);
    writer.Sdr(1000, data);
    sent.clear();
    EXPECT_EQ(Play(writer.Finish()), 1);
    ASSERT_GT(sent.size(), 1000u);
    EXPECT_EQ(sent.substr(sent.size() - 1000), expected) << "mode " << mode;
  }
}

}  // namespace
