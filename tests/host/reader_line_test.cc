// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Line reading from an open kernel file: read_line.
#include "session.h"

namespace {

using image::Bytes;

class ReaderLine : public shim::Test {
 protected:
  // A file handle of whatever type the driver declares.
  template <typename Size>
  u8 *ReadLine(Size size) {
    return Call(&read_line, size);
  }
  template <typename Handle, typename Size>
  u8 *Call(u8 *(*function)(u8 *, s32, Handle), Size size) {
    return function(buffer_.data(), size, static_cast<Handle>(file_));
  }

  void Open(const std::string &content) {
    file_ = shim::OpenFile(content);
  }
  Bytes Front(size_t count) const {
    return Bytes(buffer_.begin(), buffer_.begin() + static_cast<long>(count));
  }

  Bytes buffer_ = Bytes(64, 0xEE);
  void *file_ = nullptr;
};

TEST_F(ReaderLine, LineKeepsItsNewlineAndIsTerminated) {
  Open("ab\ncd");
  EXPECT_EQ(ReadLine(16), buffer_.data());
  EXPECT_EQ(Front(4), (Bytes{'a', 'b', '\n', 0}));
  EXPECT_EQ(shim::FilePosition(file_), 3);
}

TEST_F(ReaderLine, NextCallReadsTheNextLineAndTheLastNeedsNoNewline) {
  Open("ab\ncd");
  ReadLine(16);
  EXPECT_EQ(ReadLine(16), buffer_.data());
  EXPECT_EQ(Front(3), (Bytes{'c', 'd', 0}));
  EXPECT_EQ(shim::FilePosition(file_), 5);
  EXPECT_EQ(ReadLine(16), nullptr);
  EXPECT_EQ(shim::FilePosition(file_), 5);
}

TEST_F(ReaderLine, EmptyLineIsItsNewline) {
  Open("\n\nx");
  EXPECT_EQ(ReadLine(8), buffer_.data());
  EXPECT_EQ(Front(2), (Bytes{'\n', 0}));
  EXPECT_EQ(shim::FilePosition(file_), 1);
}

TEST_F(ReaderLine, LineThatFillsTheBufferIsNotTerminated) {
  Open("abcdefgh");
  EXPECT_EQ(ReadLine(4), buffer_.data());
  EXPECT_EQ(Front(5), (Bytes{'a', 'b', 'c', 'd', 0xEE}));
  EXPECT_EQ(shim::FilePosition(file_), 4);
  ReadLine(5);
  EXPECT_EQ(Front(5), (Bytes{'e', 'f', 'g', 'h', 0})) << "the rest of it is the next line";
}

TEST_F(ReaderLine, NewlineInTheLastPlaceFillsTheBuffer) {
  Open("abc\ndef");
  EXPECT_EQ(ReadLine(4), buffer_.data());
  EXPECT_EQ(Front(5), (Bytes{'a', 'b', 'c', '\n', 0xEE}));
  EXPECT_EQ(shim::FilePosition(file_), 4);
}

TEST_F(ReaderLine, BytesBehindTheTerminatorAreWhatWasRead) {
  Open("a\nbcd");
  ReadLine(5);
  EXPECT_EQ(Front(6), (Bytes{'a', '\n', 0, 'c', 'd', 0xEE}));
}

TEST_F(ReaderLine, NulIsAByteLikeAnyOther) {
  Open(std::string("a\0b\nc", 5));
  ReadLine(16);
  EXPECT_EQ(Front(5), (Bytes{'a', 0, 'b', '\n', 0}));
  EXPECT_EQ(shim::FilePosition(file_), 4);
}

TEST_F(ReaderLine, EmptyFileGivesNull) {
  Open("");
  EXPECT_EQ(ReadLine(16), nullptr);
  EXPECT_EQ(Front(1), (Bytes{0xEE}));
}

TEST_F(ReaderLine, FailedReadGivesNull) {
  Open("ab\n");
  shim::FailReads(true);
  EXPECT_EQ(ReadLine(16), nullptr);
  EXPECT_EQ(shim::FilePosition(file_), 0);
  shim::FailReads(false);
  EXPECT_EQ(ReadLine(16), buffer_.data());
}

TEST_F(ReaderLine, NoRoomGivesNull) {
  Open("ab\n");
  EXPECT_EQ(ReadLine(0), nullptr);
  EXPECT_EQ(shim::Reads(), 1u) << "the file is asked for no bytes";
  EXPECT_EQ(ReadLine(-1), nullptr);
  EXPECT_EQ(shim::Reads(), 1u);
  EXPECT_EQ(shim::FilePosition(file_), 0);
  EXPECT_EQ(Front(1), (Bytes{0xEE}));
}

TEST_F(ReaderLine, OneByteOfRoom) {
  Open("ab");
  EXPECT_EQ(ReadLine(1), buffer_.data());
  EXPECT_EQ(Front(2), (Bytes{'a', 0xEE}));
  EXPECT_EQ(shim::FilePosition(file_), 1);
}

TEST_F(ReaderLine, ReadsInPlaceWithoutAllocating) {
  Open("ab\n");
  ReadLine(16);
  EXPECT_TRUE(shim::Allocations().empty());
  EXPECT_TRUE(shim::Messages().empty());
}

}  // namespace
