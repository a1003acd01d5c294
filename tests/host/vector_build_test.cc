// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// One character a TCK period: the encoding, and the state walk that is made of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

constexpr uint32_t kTdi = 2, kExpected = 4, kTms = 8;

class VectorBuildTest : public EngineTest {
 protected:
  VectorBuildTest() {
    Quorlan_MemSet(0);
  }
};

TEST_F(VectorBuildTest, EveryCharacter) {
  const struct {
    uint32_t levels;
    uint8_t character;
  } table[] = {
      {0, 0x08},    {kExpected, 0x19},        {kTms, 0x2A},        {kTms | kExpected, 0x3B},
      {kTdi, 0x4C}, {kTdi | kExpected, 0x5D}, {kTdi | kTms, 0x6E}, {kTdi | kTms | kExpected, 0x7F}};
  for (const auto &row : table) {
    g_vector[0] = 0;
    g_vec_val = row.levels;
    Quorlan_GenVec();
    EXPECT_EQ(g_vector[0], row.character);
    EXPECT_EQ(g_vector[1], 0);
    EXPECT_EQ(g_buf[0], row.character);
    EXPECT_EQ(g_buf[1], 0);
    EXPECT_EQ(g_vec_val, row.levels);
  }
}

TEST_F(VectorBuildTest, OtherBitsMeanNothing) {
  for (int bit = 0; bit < 32; ++bit) {
    if (bit >= 1 && bit <= 3) {
      continue;
    }
    g_vector[0] = 0;
    g_vec_val = 1u << bit;
    Quorlan_GenVec();
    EXPECT_EQ(VectorText(), "08") << bit;
    EXPECT_EQ(g_vec_val, 1u << bit) << bit;
  }
  g_vector[0] = 0;
  g_vec_val = 0xFFFFFFFF;
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "7F");
}

TEST_F(VectorBuildTest, CharactersAreAppended) {
  g_vec_val = 0x0E;
  Quorlan_GenVec();
  g_vec_val = 0;
  Quorlan_GenVec();
  g_vec_val = kTms;
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "7F 08 2A");
}

TEST_F(VectorBuildTest, TerminatedAfterEveryAppend) {
  for (int length = 1; length <= 100; ++length) {
    Quorlan_GenVec();
    ASSERT_EQ(g_vector[length - 1], 0x08);
    ASSERT_EQ(g_vector[length], 0);
  }
  EXPECT_EQ(g_vector[101], shim::kFill) << "only the terminator is written behind";
}

TEST_F(VectorBuildTest, AppendsAtTheStartOnceTheFirstByteWasCleared) {
  for (int i = 0; i < 20; ++i) {
    Quorlan_GenVec();
  }
  g_vector[0] = 0;
  g_vec_val = kTdi;
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C");
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 4C");
}

TEST_F(VectorBuildTest, AppendsToAVectorThatTookItsPlace) {
  for (int i = 0; i < 20; ++i) {
    Quorlan_GenVec();
  }
  kfree(g_vector);
  g_vector = static_cast<uint8_t *>(shim::NewBlock(g_vector_size));
  g_vector[0] = 'L';
  g_vector[1] = 'n';
  g_vector[2] = 0;
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 6E 08");
  uint8_t *other = static_cast<uint8_t *>(shim::NewBlock(g_vector_size));
  other[0] = 0;
  kfree(g_vector);
  g_vector = other;
  Quorlan_GenVec();
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "08 08");
}

TEST_F(VectorBuildTest, AVectorThatTookItsPlaceEndsWhereItsTerminatorIs) {
  for (int i = 0; i < 20; ++i) {
    Quorlan_GenVec();
  }
  kfree(g_vector);
  g_vector = static_cast<uint8_t *>(shim::NewBlock(g_vector_size));
  std::fill(g_vector, g_vector + g_vector_size, 0);
  g_vector[0] = 'L';
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 08");
}

TEST_F(VectorBuildTest, AppendsBehindWhatWasWrittenIntoTheBuffer) {
  std::copy_n("Ln", 3, g_vector);
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 6E 08");
  std::copy_n("LLLLn", 6, g_vector);
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 4C 4C 4C 6E 08");
}

TEST_F(VectorBuildTest, AppendsBehindWhatACallerWroteAfterAReset) {
  Quorlan_Reset();
  std::copy_n("LL", 3, g_vector);
  g_vec_val = 0;
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 4C 08");
  Quorlan_StateConfig(1);
  EXPECT_EQ(VectorText(), "4C 4C 08 2A");
}

TEST_F(VectorBuildTest, AppendsAtATerminatorThatWasPutIntoTheMiddle) {
  for (int i = 0; i < 20; ++i) {
    Quorlan_GenVec();
  }
  g_vector[3] = 0;
  g_vec_val = kTdi;
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "08 08 08 4C");
  EXPECT_EQ(g_vector[5], 0x08) << "only the next character was taken for the terminator";
  g_vector[2] = 0;
  const uint8_t tdi = 0x80;
  Quorlan_SvfShiftExit(2, &tdi, nullptr, 1);
  EXPECT_EQ(VectorText(), "08 08 4C 2A");
  g_vector[1] = 0;
  Quorlan_StateConfig(2);
  EXPECT_EQ(VectorText(), "08 08");
}

TEST_F(VectorBuildTest, AppendsBehindALongerVectorThatTheCallerWrote) {
  Quorlan_GenVec();
  std::copy_n("LLLLLLLL", 9, g_vector);
  Quorlan_GenVec();
  EXPECT_EQ(VectorText(), "4C 4C 4C 4C 4C 4C 4C 4C 08");
}

TEST_F(VectorBuildTest, NothingIsAppendedToNoVector) {
  kfree(g_vector);
  g_vector = nullptr;
  Quorlan_GenVec();
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_EQ(g_buf[0], 0x08);
}

TEST_F(VectorBuildTest, StatesHaveTheirTms) {
  const std::vector<int> high = {1, 3, 6, 7, 10, 11, 13, 14};
  const std::vector<int> low = {2, 4, 5, 8, 9, 12};
  for (const int state : high) {
    g_vector[0] = 0;
    Quorlan_StateConfig(state);
    EXPECT_EQ(VectorText(), "2A") << state;
    EXPECT_EQ(g_vec_val, kTms) << state;
  }
  for (const int state : low) {
    g_vector[0] = 0;
    Quorlan_StateConfig(state);
    EXPECT_EQ(VectorText(), "08") << state;
    EXPECT_EQ(g_vec_val, 0u) << state;
  }
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(VectorBuildTest, StatesClearTdiAndExpectedAndKeepTheRest) {
  g_vec_val = 0xFFFFFFFF;
  Quorlan_StateConfig(13);
  EXPECT_EQ(VectorText(), "2A");
  EXPECT_EQ(g_vec_val, 0xFFFFFFF9u);
  g_vec_val = 0xFFFFFFFF;
  Quorlan_StateConfig(12);
  EXPECT_EQ(VectorText(), "2A 08");
  EXPECT_EQ(g_vec_val, 0xFFFFFFF1u);
}

TEST_F(VectorBuildTest, UnknownStatesAreReportedAndHaveTmsLow) {
  std::string expected;
  Messages messages;
  for (const int state :
       {0, 15, 16, -1, 33, 45, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    g_vec_val = 0x0E;
    Quorlan_StateConfig(state);
    expected += expected.empty() ? "08" : " 08";
    messages.push_back(shim::Printk("Error: StateConfig Invalid state"));
    EXPECT_EQ(VectorText(), expected) << state;
    EXPECT_EQ(g_vec_val, 0u) << state;
  }
  EXPECT_EQ(shim::Messages(), messages);
}

TEST_F(VectorBuildTest, LevelsAreClearedBeforeAnUnknownStateIsReported) {
  uint32_t levels = 0;
  shim::OnMessage([&](const shim::Message &) { levels = g_vec_val; });
  g_vec_val = 0x0E;
  Quorlan_StateConfig(15);
  EXPECT_EQ(levels & (kTdi | kExpected), 0u);
}

TEST_F(VectorBuildTest, StatesTouchNoPin) {
  Quorlan_StateConfig(1);
  Quorlan_StateConfig(0);
  EXPECT_EQ(pins.Text(), "");
}

}  // namespace
