// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The release of the session's engine buffers.
#include <gtest/gtest.h>

#include <vector>

#include "engine_fixture.h"

namespace {

class DeviceSessionTest : public shim::Test {
 protected:
  const std::vector<uint8_t **> released = {&g_vector,         &g_tir_vector, &g_tdr_vector,
                                            &g_hir_vector,     &g_hdr_vector, &g_chip_idcode,
                                            &g_chip_io_status, &g_watch_ios};
};

TEST_F(DeviceSessionTest, FreesAndClearsAllEight) {
  std::vector<uint8_t *> blocks;
  for (uint8_t **buffer : released) {
    *buffer = shim::NewString("0");
    blocks.push_back(*buffer);
  }
  Quorlan_FreeMemory();
  for (size_t i = 0; i < released.size(); ++i) {
    EXPECT_EQ(*released[i], nullptr) << i;
    EXPECT_FALSE(shim::IsLive(blocks[i])) << i;
  }
  EXPECT_EQ(shim::LiveBlocks(), 0u);
}

TEST_F(DeviceSessionTest, EachIsFreedByItself) {
  for (uint8_t **buffer : released) {
    *buffer = shim::NewString("0");
    Quorlan_FreeMemory();
    EXPECT_EQ(*buffer, nullptr);
    EXPECT_EQ(shim::LiveBlocks(), 0u);
  }
}

TEST_F(DeviceSessionTest, NullIsNotFreed) {
  Quorlan_FreeMemory();
  EXPECT_EQ(shim::FreesOfNull(), 0u);
}

TEST_F(DeviceSessionTest, AgainIsHarmless) {
  g_vector = shim::NewString("0");
  Quorlan_FreeMemory();
  Quorlan_FreeMemory();
  EXPECT_EQ(shim::LiveBlocks(), 0u);
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(DeviceSessionTest, TouchesNothingElse) {
  const std::vector<uint8_t **> kept = {&g_tir_data, &g_tdr_data, &g_hir_data, &g_hdr_data};
  std::vector<uint8_t *> blocks;
  for (uint8_t **buffer : kept) {
    *buffer = shim::NewString("0");
    blocks.push_back(*buffer);
  }
  g_tdr_len = 1;
  g_tir_len = 2;
  g_hdr_len = 3;
  g_hir_len = 4;
  g_idcode_pub = 224;
  g_io_len = 9;
  g_vector_size = 5000;
  g_vec_val = 0xE;
  g_status = 0;
  g_freq = 77;
  Quorlan_FreeMemory();
  for (size_t i = 0; i < kept.size(); ++i) {
    EXPECT_EQ(*kept[i], blocks[i]);
    EXPECT_TRUE(shim::IsLive(blocks[i]));
  }
  EXPECT_EQ(g_tdr_len, 1u);
  EXPECT_EQ(g_tir_len, 2u);
  EXPECT_EQ(g_hdr_len, 3u);
  EXPECT_EQ(g_hir_len, 4u);
  EXPECT_EQ(g_idcode_pub, 224u);
  EXPECT_EQ(g_io_len, 9u);
  EXPECT_EQ(g_vector_size, 5000u);
  EXPECT_EQ(g_vec_val, 0xEu);
  EXPECT_EQ(g_status, 0u);
  EXPECT_EQ(g_freq, 77u);
}

}  // namespace
