// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// RUNTEST records: the gate, the fields and their arithmetic.
#include "session.h"

namespace {

using image::Bytes;
using image::CycleField;
using image::Join;
using image::Number;
using image::RecordOfLength;
using image::RunTest;
using image::WaitField;
using session::Done;
using session::Messages;

constexpr uint64_t kMega = 1000000;

// The body's fields, read by themselves.
class InterpreterRunTestBody : public session::SessionTest {
 protected:
  // The cycles of a body at a frequency in Hz; the body ends in 23 and a byte that is not its own.
  uint64_t Cycles(uint64_t frequency, const Bytes &fields) {
    g_freq = frequency;
    Load(Join({fields, {23, 0x99}}));
    const uint64_t cycles = Quorlan_ProcessRuntestCmd();
    EXPECT_EQ(g_pos, fields.size() + 1);
    return cycles;
  }
};

TEST_F(InterpreterRunTestBody, FrequencyDefaultsToOneMegahertzAndStays) {
  EXPECT_EQ(Cycles(0, {}), 0u);
  EXPECT_EQ(g_freq, kMega);
}

TEST_F(InterpreterRunTestBody, SetFrequencyIsKept) {
  EXPECT_EQ(Cycles(5, {}), 0u);
  EXPECT_EQ(g_freq, 5u);
}

TEST_F(InterpreterRunTestBody, WaitInMicroseconds) {
  EXPECT_EQ(Cycles(kMega, WaitField(10)), 0u);
  EXPECT_EQ(Cycles(kMega, WaitField(1010)), 1000u);
  EXPECT_EQ(Cycles(0, WaitField(1010)), 1000u);
  EXPECT_EQ(Cycles(2 * kMega, WaitField(1010)), 2000u);
}

TEST_F(InterpreterRunTestBody, MicrosecondsEndAt32768) {
  EXPECT_EQ(Cycles(kMega, WaitField(32777)), 32767u);
  EXPECT_EQ(Cycles(kMega, WaitField(32778)), 32768u);
}

TEST_F(InterpreterRunTestBody, WaitInMilliseconds) {
  EXPECT_EQ(Cycles(kMega, WaitField(32779)), 1000u);
  EXPECT_EQ(Cycles(kMega, WaitField(32788)), 10000u);
  EXPECT_EQ(Cycles(500, WaitField(32778 + 60000)), 30000u);
}

TEST_F(InterpreterRunTestBody, ProductIsFormedBeforeTheDivisionTruncates) {
  EXPECT_EQ(Cycles(3, WaitField(10 + 30000)), 0u);
  EXPECT_EQ(Cycles(999999, WaitField(10 + 2)), 1u);
  EXPECT_EQ(Cycles(999, WaitField(32778 + 1)), 0u);
  EXPECT_EQ(Cycles(1999, WaitField(32778 + 3)), 5u);
}

TEST_F(InterpreterRunTestBody, WaitBelowTheOffsetWrapsInto64Bits) {
  // 10^6 times (0 - 32778), modulo 2^64, over 1000.
  EXPECT_EQ(Cycles(kMega, WaitField(0)), 18446744040931551u);
  EXPECT_EQ(Cycles(kMega, WaitField(9)), 18446744040940551u);
}

TEST_F(InterpreterRunTestBody, NegativeWaitWrapsInto64Bits) {
  EXPECT_EQ(Cycles(1000, Join({{24}, image::Negative(-1)})), 18446744073676772u);
}

TEST_F(InterpreterRunTestBody, ProductWrapsInto64Bits) {
  // 2^63 times 2 is 0.
  EXPECT_EQ(Cycles(uint64_t{1} << 63, WaitField(12)), 0u);
}

TEST_F(InterpreterRunTestBody, CycleCounts) {
  EXPECT_EQ(Cycles(kMega, CycleField(10)), 0u);
  EXPECT_EQ(Cycles(kMega, CycleField(110)), 100u);
  EXPECT_EQ(Cycles(kMega, CycleField(32768)), 32758u);
  EXPECT_EQ(Cycles(kMega, CycleField(32878)), 100u);
  EXPECT_EQ(Cycles(7, CycleField(32778 + 100000)), 100000u) << "whatever the frequency";
}

TEST_F(InterpreterRunTestBody, CycleCountBelowTheOffsetWraps) {
  EXPECT_EQ(Cycles(kMega, CycleField(0)), 0xFFFFFFFFFFFFFFF6);
  EXPECT_EQ(Cycles(kMega, CycleField(32769)), 0xFFFFFFFFFFFFFFF7);
  EXPECT_EQ(Cycles(kMega, Join({CycleField(3), CycleField(27)})), 10u) << "and is added so";
}

TEST_F(InterpreterRunTestBody, NegativeCycleCountIsLargerThanTheMarker) {
  // All ones, less 32768, less 10.
  EXPECT_EQ(Cycles(kMega, Join({{20}, image::Negative(-1)})), 0xFFFFFFFFFFFF7FF5);
}

TEST_F(InterpreterRunTestBody, FieldsAddUpInAnyOrder) {
  EXPECT_EQ(Cycles(kMega, Join({WaitField(15), CycleField(17)})), 12u);
  EXPECT_EQ(Cycles(kMega, Join({CycleField(17), WaitField(15)})), 12u);
  EXPECT_EQ(Cycles(kMega, Join({CycleField(11), CycleField(12), WaitField(32779), WaitField(14)})),
            1007u);
}

TEST_F(InterpreterRunTestBody, Tag19IsPassedOver) {
  EXPECT_EQ(Cycles(kMega, {19}), 0u);
  EXPECT_EQ(Cycles(kMega, Join({{19, 19}, CycleField(12), {19}, WaitField(15), {19, 19}})), 7u);
}

TEST_F(InterpreterRunTestBody, AnyOtherByteEndsItAndIsConsumed) {
  for (int byte = 0; byte < 256; ++byte) {
    if (byte == 19 || byte == 20 || byte == 24 || byte == '^') {
      continue;
    }
    g_freq = kMega;
    Load(Join({CycleField(12), {static_cast<uint8_t>(byte), 20, 30}}));
    EXPECT_EQ(Quorlan_ProcessRuntestCmd(), 2u) << byte;
    EXPECT_EQ(g_pos, 3u) << byte;
  }
}

TEST_F(InterpreterRunTestBody, MarkEndsItAndIsLeftUnread) {
  Load(Join({CycleField(12), {'^', 0x08}}));
  EXPECT_EQ(Quorlan_ProcessRuntestCmd(), 2u);
  EXPECT_EQ(g_pos, 2u);
  EXPECT_EQ(g_buffer[0], '^');
}

// Whole records.
class InterpreterRunTest : public session::SessionTest {};

TEST_F(InterpreterRunTest, ClocksInIdleWithBothLinesLow) {
  EXPECT_EQ(Play(RunTest(CycleField(12))), 0);
  EXPECT_EQ(pins_.Text(), "I0 M0 K0 K1 K0 K1");
  EXPECT_EQ(watch_.Text(), "idle 2");
  EXPECT_EQ(shim::Messages(), Messages{Done(7)});
}

TEST_F(InterpreterRunTest, WaitIsClocksAtTheFilesFrequency) {
  EXPECT_EQ(Play(Join({image::Frequency(200000), RunTest(WaitField(1010))})), 0);
  EXPECT_EQ(watch_.Text(), "idle 200");
}

TEST_F(InterpreterRunTest, RestOfTheTimeIsWaitedOut) {
  // 1000 clocks at 1 MHz need 1001 microseconds; 300 were used: 701 left, 8 units.
  shim::SetSchedClock({0, 300000});
  EXPECT_EQ(Play(RunTest(CycleField(1010))), 0);
  EXPECT_EQ(shim::Delays(), std::vector<unsigned long>(8, 429500));
}

TEST_F(InterpreterRunTest, GateByteAloneIsPassedOver) {
  EXPECT_EQ(Play(Join({RecordOfLength({16}, 4, {1}), image::Frequency(500)})), 0);
  EXPECT_EQ(g_freq, 500u) << "not even the default frequency is set before";
  EXPECT_EQ(pins_.writes(), 0u);
  EXPECT_EQ(shim::DelayCount(), 0u);
  EXPECT_EQ(shim::Messages(), Messages{Done(9)});
}

TEST_F(InterpreterRunTest, LengthOpensTheGateFrom24) {
  const Bytes body = Join({{1}, CycleField(12), {23}});
  EXPECT_EQ(Play(RecordOfLength({23}, 4, body)), 0);
  EXPECT_EQ(watch_.Text(), "");
  EXPECT_EQ(g_pos, 5u) << "the rest is not skipped: its first byte is read as a mark";
  EXPECT_EQ(Play(RecordOfLength({24}, 4, body)), 0);
  EXPECT_EQ(watch_.Text(), "idle 2");
}

TEST_F(InterpreterRunTest, LengthIsComparedAsSigned) {
  EXPECT_EQ(Play(RecordOfLength(image::Negative(-1), 4, Join({{1}, CycleField(12), {23}}))), 0);
  EXPECT_EQ(watch_.Text(), "");
  EXPECT_EQ(g_freq, 0u);
}

TEST_F(InterpreterRunTest, GateByteMustBeOne) {
  for (const int gate : {0, 2, 0x81, 0xFF}) {
    EXPECT_EQ(Play(RecordOfLength({40}, 4, {static_cast<uint8_t>(gate), 20, 12, 23})), 0);
    EXPECT_EQ(watch_.Text(), "") << gate;
    EXPECT_EQ(g_pos, 5u) << gate;
    EXPECT_EQ(g_freq, 0u) << gate;
  }
}

TEST_F(InterpreterRunTest, BytesBehindAClosedGateAreReadAsARecord) {
  EXPECT_EQ(Play(RecordOfLength({32}, 4, Join({{0}, image::Frequency(500)}))), 0);
  EXPECT_EQ(g_freq, 500u);
}

TEST_F(InterpreterRunTest, ReservedFieldByteIsNoEnd) {
  EXPECT_EQ(Play(RunTest(Join({{19}, CycleField(13)}))), 0);
  EXPECT_EQ(watch_.Text(), "idle 3");
}

TEST_F(InterpreterRunTest, RecordMayEndDirectlyBeforeTheNext) {
  EXPECT_EQ(Play(Join({image::Record(4, Join({{1}, CycleField(12)})), image::RunCycles(3)})), 0);
  EXPECT_EQ(watch_.Text(), "idle 5");
}

TEST_F(InterpreterRunTest, RecordWithoutFieldsDrivesTheLinesAndWaits) {
  EXPECT_EQ(Play(RunTest({})), 0);
  EXPECT_EQ(pins_.Text(), "I0 M0");
  EXPECT_EQ(shim::DelayCount(), 1u);
  EXPECT_EQ(g_freq, kMega);
}

TEST_F(InterpreterRunTest, ClocksAreTheLow32BitsOfTheSum) {
  g_freq = 4294967299000;
  EXPECT_EQ(Play(RunTest(WaitField(32779))), 0);
  EXPECT_EQ(watch_.Text(), "idle 3");
}

TEST_F(InterpreterRunTest, NegativeCountMakesNoClocks) {
  EXPECT_EQ(Play(RunTest(CycleField(0))), 0);
  EXPECT_EQ(pins_.Text(), "I0 M0");
  EXPECT_EQ(shim::DelayCount(), 0u) << "and no wait";
}

}  // namespace
