// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What g_stop_code tells of a download afterwards, and that none of it shows in later direct calls.
#include "session.h"

namespace {

using image::Bytes;
using image::Header;
using image::Join;
using image::Nothing;
using image::Sdr;

class DownloadStop : public session::SessionTest {
 protected:
  s32 Play(const Bytes &records) {
    return Download(Join({Header(), Nothing(), records}));
  }

  // Leaves behind what a failed allocation leaves, the run flag included.
  static void FailOnce() {
    shim::FailAllocation(1);
    Quorlan_MemSet(10);
    ASSERT_EQ(g_status, 0u);
    ASSERT_EQ(g_stop_code, -2);
  }

  const Bytes mismatch_ = Sdr(1, {0}, {0x80}, {0x80});
};

TEST_F(DownloadStop, NothingStoppedIt) {
  EXPECT_EQ(Play(Sdr(1, {0}, {0}, {0x80})), 1);
  EXPECT_EQ(g_stop_code, 0);
}

TEST_F(DownloadStop, MismatchStaysToBeRead) {
  EXPECT_EQ(Play(Join({mismatch_, Nothing()})), 0);
  EXPECT_EQ(g_stop_code, -17);
  cleanup_module();
  EXPECT_EQ(g_stop_code, -17);
}

TEST_F(DownloadStop, MismatchInTheLastRecordIsToldThoughTheDownloadCompletes) {
  EXPECT_EQ(Play(mismatch_), 1);
  EXPECT_EQ(g_stop_code, -17);
}

TEST_F(DownloadStop, WantOfMemoryAnywhere) {
  const Bytes records = Join({image::Pad(image::kHdr, 8, {0x11}), Sdr(8, {0x55}), Nothing()});
  EXPECT_EQ(Play(records), 1);
  const size_t requests = shim::Allocations().size();
  // The reset's vector, seven of the IDCODE read, the pad's bytes and vector, the data.
  ASSERT_EQ(requests, 11u);
  for (uint64_t n = 1; n <= requests; ++n) {
    shim::Reset();
    pins_.Select();
    shim::FailAllocation(n);
    const bool idcode = n >= 2 && n <= 8;
    EXPECT_EQ(Play(records), idcode ? 1 : 0) << n;
    EXPECT_EQ(g_stop_code, idcode ? 0 : -2) << n;
    EXPECT_EQ(shim::Messages().back(), session::Ended(idcode ? 0 : -2)) << n;
  }
  AllowLeaks(shim::kAnyLeaks);
}

TEST_F(DownloadStop, WantOfMemoryInThePreScanEndsTheDownload) {
  // A chain whose scan no vector holds.
  const Bytes chain =
      image::RecordOfLength({8}, image::kHdr, Join({image::Number(600000), {image::kTagTdo, 23}}));
  EXPECT_EQ(Download(Join({Header(), chain})), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-2));
  EXPECT_EQ(g_stop_code, -2);
}

TEST_F(DownloadStop, MalformedFileIsNoStop) {
  EXPECT_EQ(Play(image::Record(2, {})), 0);
  EXPECT_EQ(g_stop_code, 0);
  EXPECT_EQ(Download({'x'}), 0);
  EXPECT_EQ(g_stop_code, 0);
}

TEST_F(DownloadStop, NextDownloadStartsClean) {
  EXPECT_EQ(Play(mismatch_), 1);
  EXPECT_EQ(Play(Nothing()), 1);
  EXPECT_EQ(g_stop_code, 0);
  FailOnce();
  EXPECT_EQ(Download(Header()), 1);
  EXPECT_EQ(g_stop_code, 0);
}

TEST_F(DownloadStop, RejectedCallIsNoDownload) {
  EXPECT_EQ(Play(mismatch_), 1);
  EXPECT_EQ(TvbToVec(nullptr, image_->data(), 1), -2);
  EXPECT_EQ(g_stop_code, -17);
}

TEST_F(DownloadStop, ClearedRunFlagOfADirectCallIsAMismatchWhateverFailedBefore) {
  FailOnce();
  Load(Nothing());
  g_cfg_start_pos = 0;
  g_status = 0;
  EXPECT_EQ(Quorlan_ProcessCmd(3), -17);
  EXPECT_EQ(Quorlan_ProcessCmd(0), 0) << "there is no record to see it";
}

TEST_F(DownloadStop, ClearedRunFlagOfADirectDownloadIsAMismatchWhateverFailedBefore) {
  FailOnce();
  const Bytes file = Join({Header(), Nothing()});
  Load(file);
  g_status = 0;
  EXPECT_EQ(Quorlan_HandleTvbContent(nullptr, file.size()), -17);
  Load(Header());
  EXPECT_EQ(Quorlan_HandleTvbContent(nullptr, 16), 0);
}

TEST_F(DownloadStop, WantOfMemoryInADirectCallIsToldApart) {
  Load(Sdr(8, {0x55}));
  g_cfg_start_pos = 0;
  shim::FailAllocation(1);
  EXPECT_EQ(Quorlan_ProcessCmd(image_->size()), -2);
  EXPECT_EQ(g_stop_code, -2);
}

TEST_F(DownloadStop, ShiftsPlayAgainOnceTheRunFlagIsSet) {
  FailOnce();
  g_status = 1;
  const uint8_t tdi = 0x50;
  Quorlan_SvfShiftDataRegister(4, &tdi, nullptr, nullptr);
  EXPECT_EQ(watch_.Text(), "DR 0101");
}

}  // namespace
