// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The header check: Quorlan_ReadTvbHeader.
#include "session.h"

namespace {

using image::Bytes;
using image::Header;

class ReaderHeader : public session::SessionTest {
 protected:
  // Reads a header with the byte at `index` replaced.
  s32 ReadWith(size_t index, uint8_t byte) {
    Bytes header = Header();
    header[index] = byte;
    Load(header);
    return Quorlan_ReadTvbHeader();
  }
};

TEST_F(ReaderHeader, GoodHeaderGivesCompressionByteAndFirstRecord) {
  Load(Header(0xF2));
  EXPECT_EQ(Quorlan_ReadTvbHeader(), 0);
  EXPECT_EQ(g_compress, 0xF2);
  EXPECT_EQ(g_cfg_start_pos, 16u);
  EXPECT_EQ(g_pos, 16u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(ReaderHeader, StartsAtTheFirstByteWhereverThePositionIs) {
  Load(Header());
  g_pos = 9;
  EXPECT_EQ(Quorlan_ReadTvbHeader(), 0);
  EXPECT_EQ(g_cfg_start_pos, 16u);
}

TEST_F(ReaderHeader, CompressionByteIsStoredWhateverItIs) {
  for (const int byte : {0x00, 0x01, 0x62, 0x7F, 0x80, 0xF1, 0xFF}) {
    Load(Header(static_cast<uint8_t>(byte)));
    EXPECT_EQ(Quorlan_ReadTvbHeader(), 0);
    EXPECT_EQ(g_compress, byte);
  }
}

TEST_F(ReaderHeader, NumberOfTwoBytesMovesTheFirstRecord) {
  Load({'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF2, 'b', 0x81, 0x01, 'V', 0x01});
  EXPECT_EQ(Quorlan_ReadTvbHeader(), 0);
  EXPECT_EQ(g_cfg_start_pos, 17u);
}

TEST_F(ReaderHeader, NumberOfFiveBytesIsReadAndIgnored) {
  Load({'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'b', 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 'V', 0x01});
  EXPECT_EQ(Quorlan_ReadTvbHeader(), 0);
  EXPECT_EQ(g_cfg_start_pos, 20u);
  EXPECT_EQ(g_compress, 0);
}

TEST_F(ReaderHeader, TenBytesAreNotTested) {
  for (size_t index = 1; index <= 10; ++index) {
    for (const int byte : {0x00, 0x56, 0x61, 0x62, 0xFF}) {
      EXPECT_EQ(ReadWith(index, static_cast<uint8_t>(byte)), 0) << index << ' ' << byte;
    }
  }
}

TEST_F(ReaderHeader, WrongFirstByteStopsAtOnce) {
  g_compress = 7;
  g_cfg_start_pos = 99;
  EXPECT_EQ(ReadWith(0, 'A'), -7);
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(g_compress, 7) << "not reached";
  EXPECT_EQ(g_cfg_start_pos, 99u);
  EXPECT_EQ(g_buffer[0], 'A');
  EXPECT_EQ(g_buffer[1], 0);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(ReaderHeader, WrongSecondMarkStopsWithTheCompressionByteStored) {
  g_compress = 7;
  g_cfg_start_pos = 99;
  EXPECT_EQ(ReadWith(12, 'B'), -7);
  EXPECT_EQ(g_pos, 13u);
  EXPECT_EQ(g_compress, 0xF2);
  EXPECT_EQ(g_cfg_start_pos, 99u);
}

TEST_F(ReaderHeader, WrongVersionMarkStops) {
  g_cfg_start_pos = 99;
  EXPECT_EQ(ReadWith(14, 'v'), -7);
  EXPECT_EQ(g_pos, 15u);
  EXPECT_EQ(g_cfg_start_pos, 99u);
}

TEST_F(ReaderHeader, WrongVersionStops) {
  for (const int version : {0x00, 0x02, 0x81}) {
    g_cfg_start_pos = 99;
    EXPECT_EQ(ReadWith(15, static_cast<uint8_t>(version)), -7) << version;
    EXPECT_EQ(g_pos, 16u);
    EXPECT_EQ(g_compress, 0xF2);
    EXPECT_EQ(g_cfg_start_pos, 99u);
  }
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(ReaderHeader, ScratchHoldsTheEightBytesUnderTheLastOne) {
  std::fill(std::begin(g_buffer), std::end(g_buffer), 0xEE);
  Load(Header());
  EXPECT_EQ(Quorlan_ReadTvbHeader(), 0);
  // The last single byte, its NUL, the rest of the eight bytes 1 to 8, their NUL.
  EXPECT_EQ(session::Content(g_buffer, 10), (Bytes{1, 0, 3, 4, 5, 6, 7, 8, 0, 0xEE}));
}

TEST_F(ReaderHeader, ADownloadReportsABadHeaderAndDrivesNothing) {
  Bytes file = Header();
  file[0] = 'x';
  EXPECT_EQ(Download(file), 0);
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(pins_.reads(), 0u);
  EXPECT_EQ(shim::Messages(),
            (session::Messages{session::Started(16), shim::Log(43, 2, "m7 pls check head\r\n"),
                               session::Ended(-7)}));
  EXPECT_EQ(g_tvb_buffer, nullptr);
  EXPECT_EQ(g_tvb_length, 16u);
}

}  // namespace
