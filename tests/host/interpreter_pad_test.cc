// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Header and trailer records: Quorlan_ProcessHeadAndTrailerCommand.
#include "session.h"

namespace {

using image::Bytes;
using image::Join;
using image::kHdr;
using image::kHir;
using image::kTdr;
using image::kTir;
using image::Pad;
using image::PadBody;
using session::Characters;
using session::Content;
using session::Done;
using session::Messages;

// One of the four registers, by its opcode.
struct Register {
  signed char opcode;
  u32 *length;
  u8 **data;
  u8 **vector;
  bool trailer;
};

const Register kRegisters[] = {
    {9, &g_tdr_len, &g_tdr_data, &g_tdr_vector, true},
    {10, &g_tir_len, &g_tir_data, &g_tir_vector, true},
    {11, &g_hdr_len, &g_hdr_data, &g_hdr_vector, false},
    {12, &g_hir_len, &g_hir_data, &g_hir_vector, false},
};

class InterpreterPad : public session::SessionTest {
 protected:
  s32 Run(signed char opcode, const Bytes &body) {
    Load(Join({body, {0x99}}));
    const s32 rc = Quorlan_ProcessHeadAndTrailerCommand(opcode);
    if (rc == 0) {
      EXPECT_EQ(g_pos, body.size());
    }
    return rc;
  }

  // Nothing is stored in any register.
  void ExpectNoRegister() {
    for (const Register &r : kRegisters) {
      EXPECT_EQ(*r.length, 0u);
      EXPECT_EQ(*r.data, nullptr);
      EXPECT_EQ(*r.vector, nullptr);
    }
  }
};

TEST_F(InterpreterPad, EachOpcodeStoresItsRegisterAlone) {
  for (const Register &r : kRegisters) {
    EXPECT_EQ(Run(r.opcode, PadBody(12, {0xA5, 0xF3})), 0);
    EXPECT_EQ(*r.length, 12u);
    ASSERT_NE(*r.data, nullptr);
    EXPECT_EQ(Content(*r.data, 3), (Bytes{0xA5, 0xF3, 0x00})) << "unchanged, and a 0";
    EXPECT_EQ(shim::SizeOf(*r.data), 3u);
    const uint8_t last = r.trailer ? 0x6E : 0x4C;
    EXPECT_EQ(Characters(*r.vector),
              (Bytes{0x4C, 0x08, 0x4C, 0x08, 0x08, 0x4C, 0x08, 0x4C, 0x4C, 0x4C, 0x4C, last}));
    EXPECT_EQ(shim::SizeOf(*r.vector), 13u);
    shim::ResetDriverGlobals();
    ExpectNoRegister();
  }
}

TEST_F(InterpreterPad, DataThenVectorAreAllocatedUnzeroed) {
  EXPECT_EQ(Run(kHdr, PadBody(12, {0xA5, 0xF3})), 0);
  ASSERT_EQ(shim::Allocations().size(), 2u);
  EXPECT_EQ(shim::Allocations()[0].size, 3u);
  EXPECT_EQ(shim::Allocations()[0].flags, shim::kGfpKernel);
  EXPECT_EQ(shim::Allocations()[1].size, 13u);
  EXPECT_EQ(shim::Allocations()[1].flags, shim::kGfpKernel);
}

TEST_F(InterpreterPad, DataIsRawWhateverTheHeaderSays) {
  g_compress = 0;
  EXPECT_EQ(Run(kHir, PadBody(16, {0x04, 0x55})), 0);
  EXPECT_EQ(Content(g_hir_data, 3), (Bytes{0x04, 0x55, 0x00}));
}

TEST_F(InterpreterPad, DataIsNotMirroredAndTheClosingByteIs) {
  g_buffer[1] = 0xEE;
  EXPECT_EQ(Run(kHir, {8, 15, 0x77, 0x42}), 0) << "the closing byte is not tested";
  EXPECT_EQ(Content(g_buffer, 2), (Bytes{0x42, 0x00}));
}

TEST_F(InterpreterPad, NothingFollowsALengthOfZero) {
  for (const Register &r : kRegisters) {
    EXPECT_EQ(Run(r.opcode, PadBody(8, {0xFF})), 0);
    EXPECT_EQ(Run(r.opcode, {0}), 0);
    EXPECT_EQ(g_pos, 1u);
    EXPECT_EQ(*r.length, 0u);
    EXPECT_EQ(*r.data, nullptr);
    EXPECT_EQ(*r.vector, nullptr);
    EXPECT_EQ(shim::LiveRequests(), 0u);
  }
}

TEST_F(InterpreterPad, LaterRecordReplacesAndFreesTheEarlier) {
  EXPECT_EQ(Run(kTdr, PadBody(8, {0xFF})), 0);
  const u8 *old_data = g_tdr_data, *old_vector = g_tdr_vector;
  EXPECT_EQ(Run(kTdr, PadBody(1, {0x00})), 0);
  EXPECT_FALSE(shim::IsLive(old_data));
  EXPECT_FALSE(shim::IsLive(old_vector));
  EXPECT_EQ(g_tdr_len, 1u);
  EXPECT_EQ(Characters(g_tdr_vector), (Bytes{0x2A}));
  EXPECT_EQ(shim::LiveRequests(), 2u);
}

TEST_F(InterpreterPad, OtherTagStoresNoBytesAndAVectorOfZeros) {
  for (const Register &r : kRegisters) {
    EXPECT_EQ(Run(r.opcode, PadBody(8, {0xFF})), 0);
    EXPECT_EQ(Run(r.opcode, {4, 16, 23}), 0) << "the tag and the closing byte are read";
    EXPECT_EQ(*r.length, 4u);
    EXPECT_EQ(*r.data, nullptr);
    const uint8_t last = r.trailer ? 0x2A : 0x08;
    EXPECT_EQ(Characters(*r.vector), (Bytes{0x08, 0x08, 0x08, last}));
  }
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(InterpreterPad, OtherOpcodesAreRefusedAndStoreNothing) {
  for (const int opcode : {0, 8, 13, 127, -1, -128}) {
    shim::ClearMessages();
    EXPECT_EQ(Run(static_cast<signed char>(opcode), {0}), -10) << opcode;
    EXPECT_EQ(g_pos, 1u);
    EXPECT_EQ(shim::Messages(),
              Messages{shim::Printk("Error: invalid Head/Trailer format,  unkown opcode.\n\n")});
    ExpectNoRegister();
  }
}

TEST_F(InterpreterPad, OtherOpcodesAreRefusedBehindTheirData) {
  EXPECT_EQ(Run(13, PadBody(8, {0xFF})), -10);
  EXPECT_EQ(g_pos, 3u) << "number, tag and data, not the closing byte";
  ExpectNoRegister();
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(InterpreterPad, WithoutMemoryForTheDataNothingChanges) {
  EXPECT_EQ(Run(kHdr, PadBody(8, {0xFF})), 0);
  shim::FailAllocation(1);
  EXPECT_EQ(Run(kHdr, PadBody(16, {0x11, 0x22})), -2);
  EXPECT_EQ(g_pos, 2u) << "number and tag are read";
  EXPECT_EQ(g_hdr_len, 8u);
  EXPECT_EQ(Content(g_hdr_data, 2), (Bytes{0xFF, 0x00}));
  EXPECT_EQ(Characters(g_hdr_vector), Bytes(8, 0x4C));
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(InterpreterPad, WithoutMemoryForTheVectorTheRegisterHasNone) {
  EXPECT_EQ(Run(kHdr, PadBody(8, {0xFF})), 0);
  EXPECT_EQ(g_status, 1u);
  shim::FailAllocation(2);
  EXPECT_EQ(Run(kHdr, PadBody(16, {0x11, 0x22})), 0);
  EXPECT_EQ(g_hdr_vector, nullptr);
  EXPECT_EQ(g_hdr_len, 16u);
  EXPECT_EQ(Content(g_hdr_data, 3), (Bytes{0x11, 0x22, 0x00}));
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(g_stop_code, -2);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(InterpreterPad, WithoutMemoryForAVectorOfZeros) {
  shim::FailAllocation(1);
  EXPECT_EQ(Run(kTir, {4, 16, 23}), 0);
  EXPECT_EQ(g_tir_vector, nullptr);
  EXPECT_EQ(g_tir_len, 4u);
  EXPECT_EQ(g_status, 0u);
}

TEST_F(InterpreterPad, LengthsThatCannotBeAllocatedAreNotAskedFor) {
  // Bytes for 2^32 - 1 bits; bytes that can be had for a vector that cannot.
  EXPECT_EQ(Run(kHdr, Join({image::Negative(-1), {15, 0x11, 23}})), -2);
  EXPECT_TRUE(shim::Allocations().empty());
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(Run(kHdr, Join({image::Number(4u << 20), {15}, Bytes(512u << 10, 0xFF), {23}})), 0);
  EXPECT_EQ(shim::Allocations().size(), 1u);
  EXPECT_EQ(g_hdr_vector, nullptr);
  EXPECT_EQ(g_status, 0u);
}

TEST_F(InterpreterPad, LargestVector) {
  const u32 bits = (4u << 20) - 1;
  EXPECT_EQ(Run(kHdr, Join({image::Number(bits), {15}, Bytes(512u << 10, 0xFF), {23}})), 0);
  EXPECT_EQ(Characters(g_hdr_vector), Bytes(bits, 0x4C));
}

TEST_F(InterpreterPad, MainLoopReportsAndStops) {
  shim::FailAllocation(1);
  EXPECT_EQ(Play(Join({Pad(kHir, 8, {0xFF}), image::Frequency(500)})), -2);
  EXPECT_EQ(shim::Messages(), Messages{session::PadFailed()});
  EXPECT_EQ(g_freq, 0u);
}

TEST_F(InterpreterPad, MainLoopStopsAtTheRecordAfterAMissingVector) {
  shim::FailAllocation(2);
  EXPECT_EQ(Play(Join({Pad(kTir, 8, {0xFF}), image::Frequency(500)})), -2);
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(g_freq, 0u);
  EXPECT_EQ(g_tir_len, 8u);
}

TEST_F(InterpreterPad, MissingVectorOfTheLastRecordFailsTheFile) {
  shim::FailAllocation(2);
  EXPECT_EQ(Play(Pad(kTir, 8, {0xFF})), -2);
  EXPECT_EQ(shim::Messages(), Messages{Done(7)});
}

TEST_F(InterpreterPad, NullIsNotFreed) {
  EXPECT_EQ(Run(kHdr, PadBody(8, {0xFF})), 0);
  EXPECT_EQ(Run(kHdr, {4, 16, 23}), 0);
  EXPECT_EQ(Run(kHdr, {0}), 0);
  EXPECT_EQ(Run(13, {0}), -10);
  EXPECT_EQ(shim::FreesOfNull(), 0u);
}

TEST_F(InterpreterPad, HirsBytesHaveHdrsFreedEvenWhereTheseAreNull) {
  EXPECT_EQ(Play({}), 0);
  EXPECT_EQ(shim::FreesOfNull(), 0u);
  EXPECT_EQ(Play(Pad(kHdr, 8, {0xFF})), 0);
  EXPECT_EQ(shim::FreesOfNull(), 0u);
  EXPECT_EQ(Play(Pad(kHir, 8, {0xFF})), 0);
  EXPECT_EQ(shim::FreesOfNull(), 1u);
}

TEST_F(InterpreterPad, ShiftsPassThroughThem) {
  EXPECT_EQ(Play(Join({Pad(kHir, 3, {0x60}), Pad(kTir, 2, {0xC0}), Pad(kHdr, 1, {0x80}),
                       Pad(kTdr, 1, {0x00}), image::Sir(4, {0xB0}), image::Sdr(4, {0x60})})),
            0);
  // TDI is not driven outside the data, whatever the registers hold: it keeps its last level.
  EXPECT_EQ(watch_.Text(), "IR 000101111, DR 101100");
  EXPECT_EQ(shim::Messages(), Messages{Done(42)});
}

TEST_F(InterpreterPad, RecordLengthIsNotUsed) {
  EXPECT_EQ(Play(Join({image::RecordOfLength({0}, kHdr, PadBody(8, {0x11})),
                       image::RecordOfLength({0x7F}, kTdr, {0}), image::Frequency(500)})),
            0);
  EXPECT_EQ(g_freq, 500u);
}

}  // namespace
