// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// FREQUENCY records, and LOOP with ENDLOOP.
#include "session.h"

namespace {

using image::Bytes;
using image::EndLoop;
using image::Frequency;
using image::Join;
using image::Loop;
using image::Nothing;
using image::RunCycles;
using image::Sdr;
using session::Done;

class InterpreterFrequency : public session::SessionTest {};

TEST_F(InterpreterFrequency, FirstOneIsTaken) {
  EXPECT_EQ(Play(Frequency(2000000)), 0);
  EXPECT_EQ(g_freq, 2000000u);
}

TEST_F(InterpreterFrequency, LowestWins) {
  Play(Join({Frequency(2000000), Frequency(5000000)}));
  EXPECT_EQ(g_freq, 2000000u);
  Play(Frequency(4000000));
  EXPECT_EQ(g_freq, 2000000u) << "also over a later file";
  Play(Frequency(1999999));
  EXPECT_EQ(g_freq, 1999999u);
  Play(Frequency(1999999));
  EXPECT_EQ(g_freq, 1999999u);
}

TEST_F(InterpreterFrequency, ZeroUnsetsIt) {
  Play(Join({Frequency(2000000), Frequency(0)}));
  EXPECT_EQ(g_freq, 0u);
  Play(Frequency(5000000));
  EXPECT_EQ(g_freq, 5000000u);
}

TEST_F(InterpreterFrequency, ComparedAsSigned) {
  g_freq = 1000;
  Play(image::Record(image::kFrequency, image::Negative(-1)));
  EXPECT_EQ(g_freq, 0xFFFFFFFFFFFFFFFF) << "lower than any other";
  Play(Frequency(5));
  EXPECT_EQ(g_freq, 0xFFFFFFFFFFFFFFFF);
  Play(Frequency(0));
  EXPECT_EQ(g_freq, 0xFFFFFFFFFFFFFFFF);
  Play(image::Record(image::kFrequency, image::Negative(-2)));
  EXPECT_EQ(g_freq, 0xFFFFFFFFFFFFFFFE);
}

TEST_F(InterpreterFrequency, LengthIsNotUsed) {
  EXPECT_EQ(Play(Join({image::RecordOfLength({0x7F}, image::kFrequency, {0x21}), Nothing()})), 0);
  EXPECT_EQ(g_freq, 0x21u);
  EXPECT_EQ(shim::Messages(), session::Messages{Done(7)});
}

class InterpreterRepeat : public session::SessionTest {
 protected:
  // How often a body of one clock runs between LOOP with `count` and ENDLOOP.
  uint64_t Runs(uint64_t count) {
    watch_.Clear();
    EXPECT_EQ(Play(Join({Loop(count), RunCycles(1), EndLoop()})), 0);
    const std::string text = watch_.Text();
    return text.empty() ? 0 : std::stoul(text.substr(5));
  }
};

TEST_F(InterpreterRepeat, BodyRunsAsOftenAsTheCountSays) {
  EXPECT_EQ(Runs(0), 1u);
  EXPECT_EQ(Runs(1), 1u);
  EXPECT_EQ(Runs(2), 2u);
  EXPECT_EQ(Runs(3), 3u);
  EXPECT_EQ(Runs(200), 200u);
}

TEST_F(InterpreterRepeat, CountOf2To31OrMoreIsNegative) {
  EXPECT_EQ(Runs(0x80000000), 1u);
  EXPECT_EQ(Runs(0xFFFFFFFF), 1u);
}

TEST_F(InterpreterRepeat, ShiftRunsThreeTimes) {
  EXPECT_EQ(Play(Join({Loop(3), Sdr(4, {0x90}), EndLoop()})), 0);
  EXPECT_EQ(watch_.Text(), "DR 1001, DR 1001, DR 1001");
}

TEST_F(InterpreterRepeat, EndLoopAloneDoesNothing) {
  EXPECT_EQ(Play(Join({EndLoop(), RunCycles(2), EndLoop(), EndLoop()})), 0);
  EXPECT_EQ(watch_.Text(), "idle 2");
}

TEST_F(InterpreterRepeat, SecondEndLoopOfAFinishedLoopDoesNothing) {
  EXPECT_EQ(Play(Join({Loop(2), RunCycles(1), EndLoop(), EndLoop(), RunCycles(5)})), 0);
  EXPECT_EQ(watch_.Text(), "idle 7");
}

TEST_F(InterpreterRepeat, TwoLoopsFollowEachOther) {
  EXPECT_EQ(Play(Join({Loop(2), RunCycles(1), EndLoop(), Sdr(1, {0x80}), Loop(3), RunCycles(10),
                       EndLoop()})),
            0);
  EXPECT_EQ(watch_.Text(), "idle 2, DR 1, idle 30");
}

TEST_F(InterpreterRepeat, LoopInsideALoopOverwritesTheOneCounter) {
  // The inner loop runs out the counter and leaves its own start behind: the outer body runs once.
  EXPECT_EQ(Play(Join({Loop(5), RunCycles(1), Loop(3), RunCycles(100), EndLoop(), EndLoop()})), 0);
  EXPECT_EQ(watch_.Text(), "idle 301");
}

TEST_F(InterpreterRepeat, InnerLoopOfOneLeavesNothingToRepeat) {
  EXPECT_EQ(Play(Join({Loop(5), RunCycles(1), Loop(1), RunCycles(100), EndLoop(), EndLoop()})), 0);
  EXPECT_EQ(watch_.Text(), "idle 101");
}

TEST_F(InterpreterRepeat, LoopWithoutAnEndIsNoLoop) {
  EXPECT_EQ(Play(Join({Loop(5), RunCycles(1)})), 0);
  EXPECT_EQ(watch_.Text(), "idle 1");
}

TEST_F(InterpreterRepeat, CounterIsLocalToOneRun) {
  EXPECT_EQ(Play(Join({Loop(5), RunCycles(1)})), 0);
  EXPECT_EQ(Play(Join({RunCycles(1), EndLoop()})), 0);
  EXPECT_EQ(watch_.Text(), "idle 2");
}

TEST_F(InterpreterRepeat, VerificationThatFailsInALoopStopsIt) {
  const Bytes body = Sdr(1, {0x80}, {0x80}, {0x80});
  EXPECT_EQ(Play(Join({Loop(5), body, EndLoop()})), -17);
  EXPECT_EQ(shim::Messages(), session::Messages{session::VerifyFailed()});
}

TEST_F(InterpreterRepeat, LengthsAreNotUsed) {
  EXPECT_EQ(Play(Join({image::RecordOfLength({0}, image::kLoop, {0x02}), RunCycles(3),
                       image::RecordOfLength({0x7F}, image::kEndLoop, {})})),
            0);
  EXPECT_EQ(watch_.Text(), "idle 6");
}

TEST_F(InterpreterRepeat, RepeatedFrequencyIsHarmless) {
  EXPECT_EQ(Play(Join({Loop(3), Frequency(1000), Frequency(0), EndLoop(), Frequency(7)})), 0);
  EXPECT_EQ(g_freq, 7u);
}

}  // namespace
