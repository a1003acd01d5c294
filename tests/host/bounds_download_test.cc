// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The bound on reads during a download: it holds in the header and the pre-scan too, and it is
// gone when the download has returned. The image is guarded on both sides.
#include "session.h"

namespace {

using image::Bytes;
using image::Header;
using image::Join;
using image::kHdr;
using image::kSir;
using image::kTdr;
using image::Nothing;
using image::Record;
using session::Done;
using session::Messages;

class BoundsDownload : public session::SessionTest {
 protected:
  // Reads past g_tvb_length must reach the memory there again.
  void ExpectNoBound() {
    Load({0x11, 0x22, 0x33, 0x44, 0xC5, 0x06});
    g_tvb_length = 1;
    g_pos = 1;
    EXPECT_EQ(m7_fgetc(), 0x22u);
    EXPECT_EQ(Quorlan_ReadTvbByte(), 0x33u);
    g_compress = image::kRaw;
    const session::Owned data(Quorlan_ProcessData(1));
    EXPECT_EQ(data.get()[0], 0x44);
    EXPECT_EQ(Quorlan_ReadNumber(), 0x345u);
    EXPECT_EQ(g_pos, 6u);
  }

  // Downloads a file whose first records the pre-scan looks at, and returns what was said between
  // the start message and the end of the IDCODE read.
  void ExpectChain(const Bytes &records, u32 level, u32 total) {
    SCOPED_TRACE(::testing::PrintToString(records));
    Download(Join({Header(), records}));
    EXPECT_EQ(g_cur_level, level);
    EXPECT_EQ(g_total_level, total);
  }
};

TEST_F(BoundsDownload, HeaderCutAnywhere) {
  const Bytes header = Header();
  for (size_t length = 1; length < header.size(); ++length) {
    shim::ClearMessages();
    EXPECT_EQ(Download(Bytes(header.begin(), header.begin() + static_cast<long>(length))), 0);
    EXPECT_EQ(shim::Messages(),
              (Messages{session::Started(static_cast<uint32_t>(length)),
                        shim::Log(43, 2, "m7 pls check head\r\n"), session::Ended(-7)}))
        << length;
  }
  EXPECT_EQ(pins_.writes(), 0u);
}

TEST_F(BoundsDownload, HeaderWhoseNumberNeverEnds) {
  Bytes file = Header();
  file.resize(13);
  file.insert(file.end(), 50, 0x80);
  EXPECT_EQ(Download(file), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-7));
}

TEST_F(BoundsDownload, BytesBehindTheLengthAreNotPartOfTheFile) {
  // The image goes on with a good record, but the length does not.
  image_.emplace(Join({Header(), image::Frequency(500)}));
  EXPECT_EQ(TvbToVec(static_cast<download_context *>(pins_.context()), image_->data(), 17), 0);
  EXPECT_EQ(g_freq, 0u);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-10));
}

TEST_F(BoundsDownload, IsLiftedAfterSuccess) {
  EXPECT_EQ(Download(Join({Header(), Nothing()})), 1);
  ExpectNoBound();
}

TEST_F(BoundsDownload, IsLiftedAfterABadHeader) {
  EXPECT_EQ(Download({'a'}), 0);
  ExpectNoBound();
}

TEST_F(BoundsDownload, IsLiftedAfterAMalformedFile) {
  EXPECT_EQ(Download(Join({Header(), Record(2, {})})), 0);
  ExpectNoBound();
}

TEST_F(BoundsDownload, IsLiftedAfterAFailedVerification) {
  EXPECT_EQ(Download(Join({Header(), image::Sdr(1, {0}, {0x80}, {0x80}), Nothing()})), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-17));
  ExpectNoBound();
}

TEST_F(BoundsDownload, IsLiftedAfterMemoryWasWanting) {
  shim::FailAllocation(1);
  EXPECT_EQ(Download(Join({Header(), Nothing()})), 0);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-2));
  ExpectNoBound();
}

TEST_F(BoundsDownload, IsNeverSetByARejectedCall) {
  Load({'a', 'b'});
  EXPECT_EQ(TvbToVec(nullptr, image_->data(), 1), -2);
  ExpectNoBound();
}

TEST_F(BoundsDownload, EveryPrefixOfTheFirstRecordForThePrescan) {
  const Bytes sir = image::Sir(24, {0xFF, 0x60, 0xFF});
  for (size_t length = 0; length < sir.size(); ++length) {
    Download(Join({Header(), Bytes(sir.begin(), sir.begin() + static_cast<long>(length))}));
    EXPECT_LE(g_total_level, 3u);
    shim::ResetDriverGlobals();
  }
  AllowLeaks(4);  // the block, from where its tag is there
}

TEST_F(BoundsDownload, PrescanFillsACutBlockWithZeros) {
  // Bytes FF and then nothing: from the last index down 00 00 FF.
  ExpectChain({'^', 56, kSir, 24, 15, 0xFF}, 1, 2);
  EXPECT_EQ(shim::Messages()[1], session::BadSirInfo()) << "and its end tag is missing";
  ASSERT_EQ(shim::Allocations()[1].size, 4u) << "behind the vector, the block";
  EXPECT_EQ(session::Content(static_cast<u8 *>(shim::Allocations()[1].pointer), 4),
            (Bytes{0xFF, 0x00, 0x00, 0x00}));
  AllowLeaks(1);
}

TEST_F(BoundsDownload, PrescanEndsACutLzwStreamWithItsLastByte) {
  // A byte that is not there is no byte of the stream, not even a zero.
  Download(Join({Header(0), {'^', 72, kSir, 24, 15, 4, 0, 0x41}}));
  ASSERT_EQ(shim::Allocations()[1].size, 4u) << "behind the vector, the block";
  EXPECT_EQ(session::Content(static_cast<u8 *>(shim::Allocations()[1].pointer), 4),
            (Bytes{0x41, shim::kFill, shim::kFill, shim::kFill}));
  EXPECT_EQ(g_iWriteCount, 1);
  AllowLeaks(1);
}

TEST_F(BoundsDownload, PrescanStopsItsSearchFor23AtTheEnd) {
  ExpectChain({'^', 56, kTdr, 5, 15, 0x00}, 6, 6);
  shim::ResetDriverGlobals();
  ExpectChain({'^', 56, kHdr, 5}, 1, 6);
}

TEST_F(BoundsDownload, PrescanSkipsPastTheEnd) {
  ExpectChain(image::RecordOfLength(image::Number(0x7FFFFFFF), 7, {1}), 1, 1);
  // Ten groups or more make lengths of more than 32 bits.
  Bytes long_length(20, 0xFF);
  long_length.push_back(0x7F);
  ExpectChain(image::RecordOfLength(long_length, 7, {1}), 1, 1);
}

TEST_F(BoundsDownload, PrescanStepsBackBeforeTheImage) {
  ExpectChain(Record(kSir, Join({image::Number(1000), {23}})), 1, 1);
  EXPECT_EQ(shim::Messages()[1], session::BadSirInfo());
  ExpectChain(Record(kSir, Join({image::Negative(-1), {23}})), 1, 1);
}

TEST_F(BoundsDownload, PrescanWithABlockThatCannotBe) {
  ExpectChain(Record(kSir, Join({image::Number(0x7FFFFFF8), {15, 0x60, 23}})), 1, 1);
  EXPECT_EQ(shim::Messages().back(), session::Ended(-10)) << "the main loop finds it cut";
}

TEST_F(BoundsDownload, PrescanWithALengthOfNothingGoesOn) {
  // L/8 is 0: the opcode is the discarded byte, and the record behind it is scanned.
  ExpectChain(Join({image::RecordOfLength({0}, 7, {}), image::Pad(kTdr, 3, {0x00})}), 4, 4);
}

TEST_F(BoundsDownload, LongestPrescanEndsWithTheImage) {
  // Records that each scan passes over one by one.
  Bytes records;
  for (int i = 0; i < 1000; ++i) {
    records.insert(records.end(), {'^', 0, 7});
  }
  ExpectChain(records, 1, 1);
}

TEST_F(BoundsDownload, ImageEndsWithTheLastRecord) {
  const Bytes file = Join({Header(), image::Sir(8, {0x60}), image::Frequency(1000000)});
  EXPECT_EQ(Download(file), 1);
  EXPECT_EQ(shim::Messages()[6], Done(static_cast<uint32_t>(file.size())));
  AllowLeaks(1);
}

}  // namespace
