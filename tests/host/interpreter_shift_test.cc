// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// SIR and SDR records: Quorlan_ProcessSirAndSdrCommand, by itself and in the main loop.
#include "session.h"

namespace {

using image::Bytes;
using image::Field;
using image::Join;
using image::kSdr;
using image::kSir;
using image::kTagMask;
using image::kTagTdi;
using image::kTagTdo;
using image::Nothing;
using image::Sdr;
using image::Shift;
using image::ShiftBody;
using image::Sir;
using session::Characters;
using session::Done;
using session::Messages;

class InterpreterShift : public session::SessionTest {
 protected:
  // Runs one record's body, which a byte follows that is not its own.
  s32 Run(signed char opcode, const Bytes &body) {
    Load(Join({body, {0x99}}));
    const s32 rc = Quorlan_ProcessSirAndSdrCommand(opcode);
    if (rc == 0) {
      EXPECT_EQ(g_pos, body.size());
    }
    return rc;
  }

  // Blocks that are live beside the vector.
  size_t Kept() {
    return shim::LiveRequests() - (g_vector != nullptr);
  }
};

TEST_F(InterpreterShift, SirShiftsTheInstructionRegister) {
  EXPECT_EQ(Run(kSir, ShiftBody(8, Field(kTagTdi, {0x60}))), 0);
  EXPECT_EQ(Characters(g_vector), (Bytes{0x2A, 0x2A, 0x08, 0x08, 0x08, 0x4C, 0x4C, 0x08, 0x08, 0x08,
                                         0x08, 0x2A, 0x2A, 0x08}));
  EXPECT_EQ(watch_.Text(), "IR 01100000");
  EXPECT_TRUE(shim::Messages().empty());
  EXPECT_EQ(Kept(), 0u);
}

TEST_F(InterpreterShift, SdrShiftsTheDataRegister) {
  EXPECT_EQ(Run(kSdr, ShiftBody(8, Field(kTagTdi, {0x60}))), 0);
  EXPECT_EQ(Characters(g_vector),
            (Bytes{0x2A, 0x08, 0x08, 0x08, 0x4C, 0x4C, 0x08, 0x08, 0x08, 0x08, 0x2A, 0x2A, 0x08}));
  EXPECT_EQ(watch_.Text(), "DR 01100000");
}

TEST_F(InterpreterShift, AnyOtherOpcodeIsADataShift) {
  EXPECT_EQ(Run(0, ShiftBody(2, Field(kTagTdi, {0x80}))), 0);
  EXPECT_EQ(Run(-14, ShiftBody(2, Field(kTagTdi, {0x40}))), 0);
  EXPECT_EQ(watch_.Text(), "DR 10, DR 01");
}

TEST_F(InterpreterShift, AbsentBlocksAreNotFreed) {
  EXPECT_EQ(Play(image::Shift(image::kSdr, 8, {})), 0);
  EXPECT_EQ(shim::FreesOfNull(), 0u);
}

TEST_F(InterpreterShift, BytesCoverTheBitsRoundedUp) {
  EXPECT_EQ(Run(kSdr, ShiftBody(12, Field(kTagTdi, {0xA5, 0x5F}))), 0);
  EXPECT_EQ(watch_.Text(), "DR 101001010101");
  EXPECT_EQ(Run(kSdr, ShiftBody(16, Field(kTagTdi, {0x01, 0x80}))), 0);
  EXPECT_EQ(Run(kSdr, ShiftBody(17, Field(kTagTdi, {0x01, 0x80, 0xFF}))), 0);
  EXPECT_EQ(watch_.Text(), "DR 101001010101, DR 0000000110000000, DR 00000001100000001");
}

TEST_F(InterpreterShift, EachBlockIsOneLongerThanItsBytes) {
  const Bytes fields =
      Join({Field(kTagTdi, {1, 2}), Field(kTagTdo, {3, 4}), Field(kTagMask, {0, 0})});
  EXPECT_EQ(Run(kSdr, ShiftBody(9, fields)), 0);
  ASSERT_EQ(shim::Allocations().size(), 4u);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(shim::Allocations()[i].size, 3u);
  }
  EXPECT_EQ(Kept(), 0u);
}

TEST_F(InterpreterShift, FieldsComeInAnyOrder) {
  // TDI F0, expected 0F, only the lowest bit of it compared; it reads 1.
  const Bytes tdi = Field(kTagTdi, {0xF0}), tdo = Field(kTagTdo, {0x0F});
  const Bytes mask = Field(kTagMask, {0x01});
  for (const Bytes &fields :
       {Join({tdi, tdo, mask}), Join({tdi, mask, tdo}), Join({tdo, tdi, mask}),
        Join({tdo, mask, tdi}), Join({mask, tdi, tdo}), Join({mask, tdo, tdi})}) {
    watch_.Clear();
    pins_.ClearEvents();
    watch_.QueueTdo("00000001");
    EXPECT_EQ(Run(kSdr, ShiftBody(8, fields)), 0);
    EXPECT_EQ(watch_.Text(), "DR 11110000");
    EXPECT_EQ(g_status, 1u);
  }
  EXPECT_EQ(pins_.reads(), 6u);
}

TEST_F(InterpreterShift, MaskSaysWhichBitsAreRead) {
  watch_.QueueTdo("10100000");
  EXPECT_EQ(Run(kSdr, ShiftBody(8, Join({Field(kTagTdi, {0x00}), Field(kTagTdo, {0xA0}),
                                         Field(kTagMask, {0xE0})}))),
            0);
  EXPECT_EQ(pins_.reads(), 3u);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(InterpreterShift, MismatchClearsTheRunFlagAndStillReturnsZero) {
  watch_.QueueTdo("10100000");
  EXPECT_EQ(Run(kSdr, ShiftBody(8, Join({Field(kTagTdi, {0x00}), Field(kTagTdo, {0x80}),
                                         Field(kTagMask, {0xFF})}))),
            0);
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(shim::Messages(), Messages{session::VerifyFailed()});
  EXPECT_EQ(pins_.reads(), 3u);
  EXPECT_EQ(Kept(), 0u) << "the blocks are freed all the same";
}

TEST_F(InterpreterShift, InstructionShiftVerifiesToo) {
  watch_.QueueTdo("10000000");
  EXPECT_EQ(Run(kSir, ShiftBody(8, Join({Field(kTagTdi, {0x00}), Field(kTagTdo, {0x40}),
                                         Field(kTagMask, {0xC0})}))),
            0);
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(pins_.reads(), 1u);
}

TEST_F(InterpreterShift, ExpectedValueWithoutAMaskIsNotCompared) {
  EXPECT_EQ(Run(kSdr, ShiftBody(2, Join({Field(kTagTdi, {0x80}), Field(kTagTdo, {0xC0})}))), 0);
  EXPECT_EQ(pins_.reads(), 0u);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(Characters(g_vector), (Bytes{0x2A, 0x08, 0x08, 0x5D, 0x3B, 0x2A, 0x08}));
}

TEST_F(InterpreterShift, MaskWithoutAnExpectedValueExpectsZeros) {
  EXPECT_EQ(Run(kSdr, ShiftBody(4, Join({Field(kTagTdi, {0xF0}), Field(kTagMask, {0xF0})}))), 0);
  EXPECT_EQ(pins_.reads(), 4u);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(InterpreterShift, MissingTdiShiftsZeros) {
  EXPECT_EQ(Run(kSdr, ShiftBody(9, {})), 0);
  EXPECT_EQ(watch_.Text(), "DR 000000000");
  EXPECT_EQ(pins_.Text().find("I1"), std::string::npos);
  EXPECT_EQ(shim::Allocations().size(), 1u) << "the vector alone";
}

TEST_F(InterpreterShift, SirWithoutBlocksOfAnyKind) {
  EXPECT_EQ(Play(image::RecordOfLength({24}, kSir, {8, 23})), 0);
  EXPECT_EQ(watch_.Text(), "IR 00000000");
}

TEST_F(InterpreterShift, NoBitsShiftNothing) {
  EXPECT_EQ(Run(kSdr, ShiftBody(0, {})), 0);
  EXPECT_EQ(Characters(g_vector), (Bytes{0x2A, 0x08, 0x08, 0x2A, 0x08}));
  EXPECT_EQ(Run(kSir, ShiftBody(0, Field(kTagTdi, {}))), 0);
  EXPECT_EQ(Characters(g_vector), (Bytes{0x2A, 0x2A, 0x08, 0x08, 0x2A, 0x08}));
}

TEST_F(InterpreterShift, RepeatedFieldReplacesAndLeaksTheEarlierOne) {
  EXPECT_EQ(Run(kSdr, ShiftBody(4, Join({Field(kTagTdi, {0xF0}), Field(kTagTdi, {0x90})}))), 0);
  EXPECT_EQ(watch_.Text(), "DR 1001");
  EXPECT_EQ(Kept(), 1u);
  AllowLeaks(1);
}

TEST_F(InterpreterShift, RepeatedExpectedValueAndMaskLeakToo) {
  watch_.QueueTdo("1111");
  const Bytes fields =
      Join({Field(kTagTdo, {0x00}), Field(kTagMask, {0x00}), Field(kTagTdo, {0xF0}),
            Field(kTagMask, {0xF0}), Field(kTagTdo, {0xF0}), Field(kTagTdi, {0x00})});
  EXPECT_EQ(Run(kSdr, ShiftBody(4, fields)), 0);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(pins_.reads(), 4u);
  EXPECT_EQ(Kept(), 3u);
  AllowLeaks(3);
}

TEST_F(InterpreterShift, EveryOtherTagIsMalformed) {
  for (int tag = 0; tag < 256; ++tag) {
    if ((tag >= 15 && tag <= 17) || tag == 23) {
      continue;
    }
    shim::ClearMessages();
    EXPECT_EQ(Run(kSdr, {8, static_cast<uint8_t>(tag), 0x55, 23}), -10) << tag;
    EXPECT_EQ(g_pos, 2u) << tag;
    EXPECT_EQ(shim::Messages(), Messages{session::BadTag()}) << tag;
  }
  EXPECT_EQ(pins_.writes(), 0u);
}

TEST_F(InterpreterShift, BadTagLeaksTheBlocksBeforeIt) {
  const Bytes fields =
      Join({Field(kTagTdi, {0x01}), Field(kTagTdo, {0x02}), Field(kTagMask, {0x03}), {18}});
  EXPECT_EQ(Run(kSdr, ShiftBody(8, fields)), -10);
  EXPECT_EQ(shim::LiveRequests(), 3u);
  EXPECT_EQ(pins_.writes(), 0u) << "nothing is shifted";
  AllowLeaks(3);
}

TEST_F(InterpreterShift, UndecodableBlockIsPassedOnAsNone) {
  g_compress = 0;
  // TDI of the unknown mode 9, then an expected value and a mask that read zeros.
  const Bytes fields =
      Join({Field(kTagTdi, {9}), Field(kTagTdo, {0, 0x00}), Field(kTagMask, {0, 0xFF})});
  EXPECT_EQ(Run(kSdr, ShiftBody(8, fields)), 0);
  EXPECT_EQ(watch_.Text(), "DR 00000000");
  EXPECT_EQ(pins_.reads(), 8u);
  EXPECT_EQ(shim::Messages(), Messages{session::BadMode()});
  EXPECT_EQ(g_status, 1u);
}

TEST_F(InterpreterShift, UndecodableMaskComparesNothing) {
  g_compress = 0;
  const Bytes fields =
      Join({Field(kTagTdi, {0, 0xFF}), Field(kTagTdo, {0, 0xFF}), Field(kTagMask, {200})});
  EXPECT_EQ(Run(kSdr, ShiftBody(8, fields)), 0);
  EXPECT_EQ(watch_.Text(), "DR 11111111");
  EXPECT_EQ(pins_.reads(), 0u);
  EXPECT_EQ(g_status, 1u);
}

TEST_F(InterpreterShift, UndecodableRepetitionDropsTheEarlierBlock) {
  g_compress = 0;
  EXPECT_EQ(Run(kSdr, ShiftBody(4, Join({Field(kTagTdi, {0, 0xF0}), Field(kTagTdi, {5})}))), 0);
  EXPECT_EQ(watch_.Text(), "DR 0000");
  EXPECT_EQ(Kept(), 1u);
  AllowLeaks(1);
}

TEST_F(InterpreterShift, EveryModeDecodes) {
  g_compress = 1;
  EXPECT_EQ(Run(kSdr, ShiftBody(24, Field(kTagTdi, {0, 0x12, 0x34, 0x56}))), 0);
  EXPECT_EQ(Run(kSdr, ShiftBody(24, Field(kTagTdi, {1, 0xFF, 0x12, 0xFF, 0x01}))), 0);
  EXPECT_EQ(Run(kSdr, ShiftBody(24, Field(kTagTdi, {2, 0x01, 0xA0}))), 0);
  EXPECT_EQ(Run(kSdr, ShiftBody(24, Field(kTagTdi, {3, 0x00, 0x6A, 0x80}))), 0);
  EXPECT_EQ(Run(kSdr, ShiftBody(24, Field(kTagTdi, {4, 0, 0x41, 0xFF, 0xFE, 0x03}))), 0);
  EXPECT_EQ(watch_.Text(),
            "DR 000100100011010001010110, DR 000100101111111111111111, "
            "DR 101010101010101010101010, DR 000000001010101000000000, "
            "DR 010000010100000101000001");
}

TEST_F(InterpreterShift, MaskEndsWithItsBits) {
  // A trailer's length without its vector moves the range's end behind the data; the byte behind
  // the mask's own is not decoded in this mode.
  g_compress = 0;
  g_tdr_len = 100;
  const Bytes fields = Join({Field(kTagTdi, {1, 0xEE, 0x00}), Field(kTagTdo, {1, 0xEE, 0x00}),
                             Field(kTagMask, {1, 0xEE, 0xFF})});
  EXPECT_EQ(Run(kSdr, ShiftBody(8, fields)), 0);
  EXPECT_EQ(pins_.reads(), 8u);
}

TEST_F(InterpreterShift, RunFlagThatIsNotOnePlaysNothingButBuilds) {
  g_status = 2;
  EXPECT_EQ(Run(kSdr, ShiftBody(1, Field(kTagTdi, {0x80}))), 0);
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(Characters(g_vector), (Bytes{0x2A, 0x08, 0x08, 0x6E, 0x2A, 0x08}));
}

TEST_F(InterpreterShift, MainLoopReportsABadRecordAndReleasesNothing) {
  EXPECT_EQ(Play(Join({Sdr(8, {0x11}), Shift(kSir, 8, {18})})), -10);
  EXPECT_EQ(shim::Messages(), (Messages{session::BadTag(), session::ShiftFailed()}));
  EXPECT_NE(g_vector, nullptr);
  EXPECT_EQ(watch_.Text(), "DR 00010001");
}

TEST_F(InterpreterShift, FailedVerificationStopsTheNextRecord) {
  const Bytes bad = Sdr(1, {0x00}, {0x80}, {0x80});
  EXPECT_EQ(Play(Join({bad, Sdr(1, {0x80})})), -17);
  EXPECT_EQ(shim::Messages(), Messages{session::VerifyFailed()});
}

TEST_F(InterpreterShift, FailedVerificationInTheLastRecordIsNotSeen) {
  const Bytes bad = Sdr(1, {0x00}, {0x80}, {0x80});
  EXPECT_EQ(Play(Join({Nothing(), bad})), 0);
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(shim::Messages(), (Messages{session::VerifyFailed(), Done(14)}));
  EXPECT_EQ(g_vector, nullptr) << "released";
}

TEST_F(InterpreterShift, FailedVerificationBeforeAStrayByteIsNotSeen) {
  EXPECT_EQ(Play(Join({Sdr(1, {0x00}, {0x80}, {0x80}), {'x', '^'}})), 0);
}

TEST_F(InterpreterShift, LengthOfTheRecordIsNotUsed) {
  EXPECT_EQ(Play(Join({image::RecordOfLength({0}, kSdr, ShiftBody(1, Field(kTagTdi, {0x80}))),
                       image::RecordOfLength({0x7F}, kSir, ShiftBody(1, Field(kTagTdi, {0x80})))})),
            0);
  EXPECT_EQ(watch_.Text(), "DR 1, IR 1");
}

}  // namespace
