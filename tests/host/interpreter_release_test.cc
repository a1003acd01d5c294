// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the end of a file releases, what it keeps, and Quorlan_PrintData.
#include "session.h"

namespace {

using image::Bytes;
using image::Join;
using image::kHdr;
using image::kHir;
using image::kTdr;
using image::kTir;
using image::Nothing;
using image::Pad;
using session::Content;
using session::Done;
using session::Messages;

class InterpreterRelease : public session::SessionTest {
 protected:
  u8 *Block() {
    return static_cast<u8 *>(shim::NewBlock(2));
  }
};

TEST_F(InterpreterRelease, EverythingButTheHirBytesAndTheLengths) {
  EXPECT_EQ(Play(Join({Pad(kHir, 8, {0xF1}), Pad(kHdr, 7, {0xF2}), Pad(kTir, 6, {0xF3}),
                       Pad(kTdr, 5, {0xF4}), image::Record(image::kSir, {8, 23})})),
            0);
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_EQ(g_hir_vector, nullptr);
  EXPECT_EQ(g_hdr_vector, nullptr);
  EXPECT_EQ(g_tir_vector, nullptr);
  EXPECT_EQ(g_tdr_vector, nullptr);
  EXPECT_EQ(g_hdr_data, nullptr);
  EXPECT_EQ(g_tir_data, nullptr);
  EXPECT_EQ(g_tdr_data, nullptr);
  ASSERT_NE(g_hir_data, nullptr);
  EXPECT_EQ(Content(g_hir_data, 2), (Bytes{0xF1, 0x00}));
  EXPECT_EQ(shim::LiveRequests(), 1u) << "the HIR bytes alone";
  EXPECT_EQ(g_hir_len, 8u);
  EXPECT_EQ(g_hdr_len, 7u);
  EXPECT_EQ(g_tir_len, 6u);
  EXPECT_EQ(g_tdr_len, 5u);
}

TEST_F(InterpreterRelease, HirRecordOfALaterFileReplacesTheBytes) {
  Play(Pad(kHir, 8, {0xF1}));
  const u8 *old = g_hir_data;
  Play(Pad(kHir, 4, {0xF2}));
  EXPECT_FALSE(shim::IsLive(old));
  EXPECT_EQ(shim::LiveRequests(), 1u);
  Play(Pad(kHir, 0));
  EXPECT_EQ(g_hir_data, nullptr);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(InterpreterRelease, LengthsOutliveTheirVectorsAndShiftTheDataRange) {
  Play(Join({Pad(kHir, 2, {0xFF}), Pad(kTir, 1, {0xFF})}));
  EXPECT_EQ(g_hir_vector, nullptr);
  watch_.Clear();
  pins_.ClearEvents();
  // A shift of 8 bits without vectors is 14 periods; the range is [2 + 4, 14 - 1 - 2).
  EXPECT_EQ(Play(image::Sir(8, {0xFF})), 0);
  std::string text;
  for (int i = 0; i < 14; ++i) {
    const bool data = i >= 6 && i < 11;
    const bool tms = i <= 6 || i >= 10;
    const bool high = i == 0 || i == 1 || i == 11 || i == 12;
    text += std::string(i == 0 ? "" : " ") + "K0" + (data ? " I1" : "") +
            (tms ? (high ? " M1" : " M0") : "") + " K1";
  }
  EXPECT_EQ(pins_.Text(), text);
}

TEST_F(InterpreterRelease, EngineResultsAreReleased) {
  g_chip_idcode = Block();
  g_chip_io_status = Block();
  g_watch_ios = Block();
  EXPECT_EQ(Play({}), 0);
  EXPECT_EQ(g_chip_idcode, nullptr);
  EXPECT_EQ(g_chip_io_status, nullptr);
  EXPECT_EQ(g_watch_ios, nullptr);
  EXPECT_EQ(shim::LiveBlocks(), 0u);
}

TEST_F(InterpreterRelease, EachTrailerIsReleasedByItself) {
  g_tir_data = Block();
  Play({});
  EXPECT_EQ(g_tir_data, nullptr);
  g_tdr_data = Block();
  Play({});
  EXPECT_EQ(g_tdr_data, nullptr);
  g_hdr_data = Block();
  Play({});
  EXPECT_EQ(g_hdr_data, nullptr);
  EXPECT_EQ(shim::LiveBlocks(), 0u);
}

TEST_F(InterpreterRelease, HirBytesAloneStay) {
  g_hir_data = Block();
  EXPECT_EQ(Play({}), 0);
  EXPECT_TRUE(shim::IsLive(g_hir_data));
  EXPECT_EQ(g_hdr_data, nullptr);
}

TEST_F(InterpreterRelease, StrayByteReleasesToo) {
  g_tdr_data = Block();
  EXPECT_EQ(Play({'x'}), 0);
  EXPECT_EQ(shim::LiveBlocks(), 0u);
}

TEST_F(InterpreterRelease, MessageComesBeforeTheRelease) {
  g_tdr_data = Block();
  bool live = false;
  shim::OnMessage([&](const shim::Message &) { live = shim::IsLive(g_tdr_data); });
  EXPECT_EQ(Play({}), 0);
  EXPECT_TRUE(live);
}

TEST_F(InterpreterRelease, StoppedFileReleasesNothingAndTheNextOneDoes) {
  g_chip_idcode = Block();
  const Bytes pads = Join(
      {Pad(kHir, 8, {0xF1}), Pad(kHdr, 8, {0xF2}), Pad(kTir, 8, {0xF3}), Pad(kTdr, 8, {0xF4})});
  EXPECT_EQ(Play(Join({pads, image::Record(2, {})})), -10);
  EXPECT_EQ(shim::LiveRequests(), 8u);
  EXPECT_NE(g_chip_idcode, nullptr);
  EXPECT_EQ(Play(Join({pads, image::Sdr(1, {0}, {0x80}, {0x80}), Nothing()})), -17);
  EXPECT_EQ(shim::LiveRequests(), 9u) << "four pairs and the vector";
  EXPECT_EQ(Play({}), 0);
  EXPECT_EQ(shim::LiveRequests(), 1u);
  EXPECT_EQ(g_chip_idcode, nullptr);
}

class InterpreterPrint : public session::SessionTest {};

TEST_F(InterpreterPrint, BytesAreMirroredFromTheLastToTheFirst) {
  const Bytes bytes = {0x01, 0x60, 0xF0, 0x05};
  EXPECT_EQ(Quorlan_PrintData(4, bytes.data()), 2);
  EXPECT_EQ(shim::Messages(),
            (Messages{shim::Printk(" ("), shim::Printk("A0"), shim::Printk("0F"),
                      shim::Printk("06"), shim::Printk("80"), shim::Printk(") ")}));
}

TEST_F(InterpreterPrint, NoBytesPrintTheBracketsOnly) {
  for (const s32 count : {0, -1, INT32_MIN}) {
    shim::ClearMessages();
    Quorlan_PrintData(count, nullptr);
    EXPECT_EQ(shim::Messages(), (Messages{shim::Printk(" ("), shim::Printk(") ")}));
  }
}

}  // namespace
