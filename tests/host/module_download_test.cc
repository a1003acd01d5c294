// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One download from call to result: its steps in order, and every way in which it can end.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_fixture.h"
#include "image.h"

namespace {

using image::Bytes;
using image::Join;

const char kCheckHead[] = "m7 pls check head\r\n";
const char kVerifyFailed[] = "Verify Failed\r\n";

class ModuleDownloadTest : public shim::Test {
 protected:
  int32_t Download(const Bytes &file) {
    shim::ClearMessages();
    pins.ClearEvents();
    return TvbToVec(static_cast<download_context *>(pins.context()), file.data(),
                    static_cast<uint32_t>(file.size()));
  }
  static shim::Message Start(size_t length) {
    return shim::Log(43, 2, "m7 cplddownload start file len " + std::to_string(length) + "\r\n");
  }
  static shim::Message Done(size_t position) {
    return shim::Log(43, 2, "m7 process done file len " + std::to_string(position) + "\r\n");
  }
  static shim::Message End(int code) {
    return shim::Log(43, 2, "m7 cplddownload end rtn_code " + std::to_string(code) + "\r\n");
  }
  // The messages of a download of `file` on lines that read 0, with `last` behind the IDCODE.
  static Messages Played(const Bytes &file, const Messages &last) {
    Messages messages = {Start(file.size()), shim::Log(43, 2, "DECODE CHIP : ")};
    messages.insert(messages.end(), 4, shim::Log(43, 2, "00"));
    messages.insert(messages.end(), last.begin(), last.end());
    return messages;
  }
  // A shift that does not verify while TDO reads 0.
  static Bytes Mismatch() {
    return image::Sdr(8, {0x00}, {0xFF}, {0xFF});
  }

  shim::Pins pins;
  const Bytes shortest = Join({image::Header(), image::Nothing()});
};

TEST_F(ModuleDownloadTest, SuccessIsOne) {
  EXPECT_EQ(Download(shortest), 1);
  EXPECT_EQ(shim::Messages(), Played(shortest, {Done(19), End(0)}));
  EXPECT_EQ(g_tvb_buffer, nullptr);
  EXPECT_EQ(g_tvb_length, 19u);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(g_tvb_cpld_cfg, pins.config());
  EXPECT_EQ(g_tvb_jtag_funcs, pins.operations());
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(ModuleDownloadTest, ResetsThenReadsTheIdcode) {
  Download(shortest);
  EXPECT_EQ(pins.Text(), ResetCalls() + " " +
                             Periods({{2, "K0 M1 K1"},
                                      {2, "K0 M0 K1"},
                                      {1, "K0 I0 M0 K1"},
                                      {2, "K0 I1 K1"},
                                      {4, "K0 I0 K1"},
                                      {1, "K0 I0 M1 K1"},
                                      {1, "K0 M1 K1"},
                                      {1, "K0 M0 K1"},
                                      {1, "K0 M1 K1"},
                                      {2, "K0 M0 K1"},
                                      {1, "K0 I1 M0 R0 K1"},
                                      {30, "K0 I1 R0 K1"},
                                      {1, "K0 I1 M1 R0 K1"},
                                      {1, "K0 M1 K1"},
                                      {1, "K0 M0 K1"}}));
}

TEST_F(ModuleDownloadTest, RecordsArePlayedAfterTheIdcode) {
  std::vector<uint64_t> writes;
  shim::OnMessage([&](const shim::Message &message) {
    if (message.text == "00" || message == Done(28)) {
      writes.push_back(pins.writes());
    }
  });
  const Bytes file = Join({shortest, image::Sdr(8, {0xA5})});
  Download(file);
  ASSERT_EQ(file.size(), 26u);
  ASSERT_EQ(writes.size(), 4u);
  // Thirteen periods: two TCK each, eight TDI, seven TMS.
  EXPECT_EQ(pins.writes() - writes[0], 2u * 13 + 8 + 7);
}

TEST_F(ModuleDownloadTest, ThroughTheOperationTable) {
  const auto download =
      reinterpret_cast<int32_t (*)(void *, const uint8_t *, uint32_t)>(g_tvb_drv.ops[0]);
  EXPECT_EQ(download(pins.context(), shortest.data(), 19), 1);
}

TEST_F(ModuleDownloadTest, ImageIsNotChanged) {
  const Bytes file = Join({shortest, image::Sdr(8, {0xA5}), image::Nothing()});
  const Bytes copy = file;
  Download(file);
  EXPECT_EQ(file, copy);
}

TEST_F(ModuleDownloadTest, BadHeaderDrivesNothing) {
  const Bytes file = {'b', 0, 0};
  EXPECT_EQ(Download(file), 0);
  EXPECT_EQ(shim::Messages(), (Messages{Start(3), shim::Log(43, 2, kCheckHead), End(-7)}));
  EXPECT_EQ(pins.Text(), "");
  EXPECT_TRUE(shim::Allocations().empty());
  EXPECT_EQ(g_tvb_buffer, nullptr);
}

TEST_F(ModuleDownloadTest, FailedVerificationBeforeARecordFails) {
  const Bytes file = Join({shortest, Mismatch(), image::Nothing()});
  EXPECT_EQ(Download(file), 0);
  EXPECT_EQ(shim::Messages(), Played(file, {shim::Log(43, 2, kVerifyFailed), End(-17)}));
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(g_tvb_buffer, nullptr);
}

TEST_F(ModuleDownloadTest, FailedVerificationInTheLastRecordGoesUnseen) {
  const Bytes file = Join({shortest, Mismatch()});
  EXPECT_EQ(Download(file), 1);
  EXPECT_EQ(shim::Messages(),
            Played(file, {shim::Log(43, 2, kVerifyFailed), Done(file.size()), End(0)}));
}

TEST_F(ModuleDownloadTest, TheNextDownloadRunsAgain) {
  Download(Join({shortest, Mismatch(), image::Nothing()}));
  EXPECT_EQ(Download(shortest), 1);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(pins.Text().substr(0, ResetCalls().size()), ResetCalls());
  AllowLeaks(1);  // the failed download's IDCODE, overwritten by the next one
}

TEST_F(ModuleDownloadTest, MalformedFileFails) {
  const Bytes file = Join({shortest, image::Record(2, {})});
  EXPECT_EQ(Download(file), 0);
  EXPECT_EQ(
      shim::Messages(),
      Played(file, {shim::Log(43, 2, "Error: invalid file format, unkown opcode\r\n"), End(-10)}));
}

TEST_F(ModuleDownloadTest, NoMemoryForARegisterFails) {
  const Bytes file = Join({shortest, image::Pad(image::kHir, 8, {0xFF})});
  // The vector, the instruction, three blocks to read with, the capture, its reversal, the bytes.
  shim::FailAllocation(9);
  EXPECT_EQ(Download(file), 0);
  EXPECT_EQ(shim::Messages(),
            Played(file, {shim::Log(43, 2, "Exe head or trailer command error\r\n"), End(-2)}));
}

TEST_F(ModuleDownloadTest, AVectorThatCannotBeHadFailsInTheLastRecordToo) {
  for (const uint64_t bits : {uint64_t{4} << 20, uint64_t{0x7FFFFFF0}, uint64_t{0xFFFFFFFF}}) {
    shim::Reset();
    const Bytes file = Join({shortest, image::Shift(image::kSdr, bits, {})});
    EXPECT_EQ(Download(file), 0) << bits;
    EXPECT_EQ(shim::Messages().back(), End(-2)) << bits;
    EXPECT_EQ(g_status, 0u);
  }
}

TEST_F(ModuleDownloadTest, AVectorThatCannotBeHadIsNotPlayed) {
  Download(shortest);
  const std::string played = pins.Text();
  Download(Join({shortest, image::Shift(image::kSir, 4 << 20, {})}));
  EXPECT_EQ(pins.Text(), played);
}

TEST_F(ModuleDownloadTest, NoMemoryToResetFails) {
  shim::FailAllocation(1);
  EXPECT_EQ(Download(shortest), 0);
  EXPECT_EQ(shim::Messages().back(), End(-2));
  EXPECT_EQ(pins.Text(), "");
  EXPECT_EQ(Download(shortest), 1);
}

TEST_F(ModuleDownloadTest, UnreadIdcodeDoesNotFail) {
  shim::FailAllocation(3);
  EXPECT_EQ(Download(shortest), 1);
  EXPECT_EQ(shim::Messages(),
            (Messages{Start(19), shim::Log(43, 2, "Error: Cannot Read CHIP IDCODE\r\n"), Done(19),
                      End(0)}));
}

TEST_F(ModuleDownloadTest, ImageIsReadThroughTheSessionsPointer) {
  pins.Select();
  g_tvb_buffer = shortest.data();
  EXPECT_EQ(Quorlan_HandleTvbContent(nullptr, shortest.size()), 0);
  EXPECT_EQ(g_tvb_length, 19u);
  EXPECT_EQ(g_tvb_buffer, shortest.data()) << "the caller clears it";
  const Bytes bad = {'b'};
  EXPECT_EQ(Quorlan_HandleTvbContent(bad.data(), shortest.size()), 0);
  g_tvb_buffer = bad.data();
  EXPECT_EQ(Quorlan_HandleTvbContent(shortest.data(), 1), -7);
  EXPECT_EQ(g_tvb_length, 1u);
}

TEST_F(ModuleDownloadTest, ContentResultsAreTheInterpreters) {
  pins.Select();
  const Bytes unknown = Join({shortest, image::Record(2, {})});
  g_tvb_buffer = unknown.data();
  EXPECT_EQ(Quorlan_HandleTvbContent(unknown.data(), unknown.size()), -10);
  const Bytes mismatch = Join({shortest, Mismatch(), image::Nothing()});
  g_tvb_buffer = mismatch.data();
  EXPECT_EQ(Quorlan_HandleTvbContent(mismatch.data(), mismatch.size()), -17);
  AllowLeaks(1);  // the IDCODE of the first
}

// What stopped one download is forgotten with it: whoever finds the run stopped afterwards finds it
// stopped by a verification.
TEST_F(ModuleDownloadTest, WantOfMemoryEndsWithItsDownload) {
  Download(Join({shortest, image::Shift(image::kSdr, 4 << 20, {})}));
  EXPECT_EQ(shim::Messages().back(), End(-2));
  g_tvb_buffer = shortest.data();
  g_status = 0;
  EXPECT_EQ(Quorlan_ProcessCmd(shortest.size()), -17);
  EXPECT_EQ(Quorlan_HandleTvbContent(shortest.data(), shortest.size()), -17);
}

TEST_F(ModuleDownloadTest, AVerificationThatFailsAfterWantOfMemoryIsToldFromIt) {
  Download(Join({shortest, image::Shift(image::kSdr, 4 << 20, {})}));
  const Bytes file = Join({shortest, Mismatch(), image::Nothing()});
  g_tvb_buffer = file.data();
  g_vector_size = 3200;
  g_status = 1;
  EXPECT_EQ(Quorlan_ProcessCmd(file.size()), -17);
}

TEST_F(ModuleDownloadTest, NothingBehindTheLengthIsRead) {
  // What follows would be a record that fails.
  const Bytes file = Join({shortest, image::Record(2, {})});
  pins.Select();
  g_tvb_buffer = file.data();
  EXPECT_EQ(Quorlan_HandleTvbContent(file.data(), shortest.size()), 0);
}

TEST_F(ModuleDownloadTest, ReadersAreUnboundedAgainAfterwards) {
  const Bytes file = Join({shortest, Bytes{0x77}});
  for (const uint64_t length : {uint64_t{1}, uint64_t{19}}) {
    g_tvb_buffer = file.data();
    pins.Select();
    Quorlan_HandleTvbContent(file.data(), length);
    g_tvb_buffer = file.data();
    g_pos = 19;
    EXPECT_EQ(m7_fgetc(), 0x77u);
  }
}

TEST_F(ModuleDownloadTest, EveryFailedAllocationIsSurvived) {
  const Bytes file = Join({shortest, image::Pad(image::kTdr, 3, {0xE0}), image::Sir(8, {0x60}),
                           image::Sdr(5000, Bytes(625, 0xA5)), image::Nothing()});
  AllowLeaks(shim::kAnyLeaks);
  for (const bool all : {false, true}) {
    int32_t result = 0;
    uint64_t n = 0;
    size_t requests = 0;
    do {
      shim::Reset();
      ++n;
      all ? shim::FailAllocationsFrom(n) : shim::FailAllocation(n);
      result = Download(file);
      requests = shim::Allocations().size();
      EXPECT_EQ(g_tvb_buffer, nullptr);
      EXPECT_EQ(shim::Messages().back(), End(result == 1 ? 0 : -2)) << n;
      shim::FailAllocation(0);
      EXPECT_EQ(Download(file), 1) << n;
    } while (n <= requests);
    EXPECT_EQ(result, 1);
    EXPECT_GT(n, 10u);
  }
}

}  // namespace
