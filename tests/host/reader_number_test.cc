// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Numbers in groups of seven bits, as the interpreter and the decoders read them by one rule.
#include "session.h"

namespace {

using image::Bytes;

struct Case {
  Bytes bytes;
  uint64_t value;
};

// Every number is followed by a byte that is not its own.
const Case kCases[] = {
    {{0x00}, 0},
    {{0x05}, 5},
    {{0x7F}, 127},
    {{0x80, 0x00}, 0},
    {{0x80, 0x01}, 128},
    {{0x85, 0x01}, 133},
    {{0xFF, 0x01}, 255},
    {{0x80, 0x80, 0x01}, 16384},
    {{0x80, 0x80, 0x80, 0x01}, 2097152},
    {{0x80, 0x80, 0x80, 0x80, 0x01}, 268435456},
    {{0xFF, 0xFF, 0xFF, 0x7F}, 268435455},
    {{0xFF, 0xFF, 0xFF, 0xFF, 0x07}, 0x7FFFFFFF},
    // The fifth group sets bit 31: sign-extended.
    {{0xFF, 0xFF, 0xFF, 0xFF, 0x0F}, 0xFFFFFFFFFFFFFFFF},
    {{0x80, 0x80, 0x80, 0x80, 0x08}, 0xFFFFFFFF80000000},
    {{0x81, 0x80, 0x80, 0x80, 0x08}, 0xFFFFFFFF80000001},
    // Its upper three bits are lost.
    {{0x80, 0x80, 0x80, 0x80, 0x70}, 0},
    {{0x80, 0x80, 0x80, 0x80, 0x7F}, 0xFFFFFFFFF0000000},
    {{0x80, 0x80, 0x80, 0x80, 0x17}, 0x70000000},
    // The sixth shifts by 35 modulo 32, and the sum is one of 64 bits.
    {{0x80, 0x80, 0x80, 0x80, 0x80, 0x01}, 8},
    {{0xFF, 0xFF, 0xFF, 0xFF, 0x87, 0x7F}, 0x800003F7},
    {{0x80, 0x80, 0x80, 0x80, 0x88, 0x01}, 0xFFFFFFFF80000008},
    // The tenth shifts by 63 modulo 32, only its lowest bit is left.
    {{0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x7F}, 0xFFFFFFFF80000000},
    // Two groups may each be sign-extended: their sum wraps in 64 bits.
    {{0x80, 0x80, 0x80, 0x80, 0x88, 0x80, 0x80, 0x80, 0x80, 0x01}, 0xFFFFFFFF00000000},
};

// Thirty-two empty groups bring the shift back to 0.
Bytes LongNumber() {
  Bytes bytes(32, 0x80);
  bytes.push_back(0x05);
  return bytes;
}

class ReaderNumber : public session::SessionTest,
                     public ::testing::WithParamInterface<uint64_t (*)()> {
 protected:
  uint64_t Read(const Bytes &bytes) {
    Load(image::Join({bytes, {0xC3}}));
    return GetParam()();
  }
};

uint64_t OfInterpreter() {
  return Quorlan_ReadNumber();
}

uint64_t OfDecoders() {
  return static_cast<uint64_t>(Quorlan_NumberDecode());
}

TEST_P(ReaderNumber, Values) {
  for (const Case &c : kCases) {
    EXPECT_EQ(Read(c.bytes), c.value) << ::testing::PrintToString(c.bytes);
    EXPECT_EQ(g_pos, c.bytes.size()) << ::testing::PrintToString(c.bytes);
  }
}

TEST_P(ReaderNumber, GroupsGoOnAsLongAsBit7IsSet) {
  EXPECT_EQ(Read(LongNumber()), 5u);
  EXPECT_EQ(g_pos, 33u);
}

TEST_P(ReaderNumber, EachByteIsMirrored) {
  g_buffer[1] = g_buffer[2] = 0xEE;
  Read({0x85, 0x01});
  EXPECT_EQ(session::Content(g_buffer, 3), (Bytes{0x01, 0x00, 0xEE}));
}

TEST_P(ReaderNumber, StartsAtThePosition) {
  Load({0xFF, 0xFF, 0x81, 0x02, 0x55});
  g_pos = 2;
  EXPECT_EQ(GetParam()(), 257u);
  EXPECT_EQ(g_pos, 4u);
}

TEST_P(ReaderNumber, OutsideADownloadTheLengthIsNoBound) {
  Load({0x80, 0x01, 0x55});
  g_tvb_length = 1;
  EXPECT_EQ(GetParam()(), 128u);
  EXPECT_EQ(g_pos, 2u);
}

INSTANTIATE_TEST_SUITE_P(Both, ReaderNumber, ::testing::Values(&OfInterpreter, &OfDecoders),
                         [](const auto &info) {
                           return info.index == 0 ? "Interpreter" : "Decoders";
                         });

}  // namespace
