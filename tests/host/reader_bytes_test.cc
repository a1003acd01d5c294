// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The byte reader and buffer_read.
#include "session.h"

namespace {

using image::Bytes;

class ReaderBytes : public session::SessionTest {};

TEST_F(ReaderBytes, ByteIsReturnedMirroredAndPassed) {
  std::fill(std::begin(g_buffer), std::end(g_buffer), 0xEE);
  Load({0x41, 0xFF, 0x00});
  EXPECT_EQ(m7_fgetc(), 0x41u);
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(session::Content(g_buffer, 3), (Bytes{0x41, 0x00, 0xEE}));
  EXPECT_EQ(m7_fgetc(), 0xFFu) << "unsigned";
  EXPECT_EQ(session::Content(g_buffer, 3), (Bytes{0xFF, 0x00, 0xEE}));
  EXPECT_EQ(m7_fgetc(), 0u);
  EXPECT_EQ(g_pos, 3u);
  EXPECT_EQ(session::Content(g_buffer, 3), (Bytes{0x00, 0x00, 0xEE}));
}

TEST_F(ReaderBytes, MirrorIs1024Bytes) {
  EXPECT_EQ(sizeof g_buffer, 1024u);
}

TEST_F(ReaderBytes, OutsideADownloadTheLengthIsNoBound) {
  Load({1, 2, 3});
  g_tvb_length = 1;
  g_pos = 2;
  EXPECT_EQ(m7_fgetc(), 3u);
  EXPECT_EQ(g_pos, 3u);
}

TEST_F(ReaderBytes, TvbByteIsTheSameByte) {
  Load({0x00, 0xFF});
  EXPECT_EQ(Quorlan_ReadTvbByte(), 0u);
  EXPECT_EQ(Quorlan_ReadTvbByte(), 0xFFu);
  EXPECT_EQ(g_pos, 2u);
  EXPECT_EQ(g_buffer[0], 0xFF);
}

TEST_F(ReaderBytes, CopyStartsAtThePositionAndEndsWithANul) {
  const Bytes source = {10, 11, 12, 13, 14, 15};
  Bytes target(6, 0xEE);
  u64 position = 2;
  buffer_read(source.data(), target.data(), 3, &position);
  EXPECT_EQ(target, (Bytes{12, 13, 14, 0, 0xEE, 0xEE}));
  EXPECT_EQ(position, 5u);
}

TEST_F(ReaderBytes, CopyOfNothingWritesTheNul) {
  const Bytes source = {10, 11};
  Bytes target(2, 0xEE);
  u64 position = 1;
  buffer_read(source.data(), target.data(), 0, &position);
  EXPECT_EQ(target, (Bytes{0, 0xEE}));
  EXPECT_EQ(position, 1u);
}

TEST_F(ReaderBytes, CopyLeavesTheReaderAlone) {
  Load({1, 2, 3});
  g_pos = 1;
  g_buffer[0] = g_buffer[1] = 0xEE;
  const Bytes source = {7, 8};
  Bytes target(3);
  u64 position = 0;
  buffer_read(source.data(), target.data(), 2, &position);
  EXPECT_EQ(target, (Bytes{7, 8, 0}));
  EXPECT_EQ(g_pos, 1u);
  EXPECT_EQ(session::Content(g_buffer, 2), (Bytes{0xEE, 0xEE}));
}

TEST_F(ReaderBytes, CopyCanUseTheReadersOwnPosition) {
  Load({1, 2, 3, 4});
  g_pos = 1;
  Bytes target(3);
  buffer_read(g_tvb_buffer, target.data(), 2, &g_pos);
  EXPECT_EQ(target, (Bytes{2, 3, 0}));
  EXPECT_EQ(g_pos, 3u);
  EXPECT_EQ(m7_fgetc(), 4u);
}

}  // namespace
