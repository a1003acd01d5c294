// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Load and unload, and the record that the framework is given.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "engine_fixture.h"

namespace {

// The driver's globals before main(), hence before any test: as the kernel finds them at load.
struct AtLoad {
  tvb_driver record = g_tvb_drv;
  const uint8_t *image = g_tvb_buffer;
  uint64_t numbers[5] = {g_tvb_length, g_pos, g_cfg_start_pos, g_freq, g_alloc_failures};
  int32_t stop_code = g_stop_code;
  uint32_t status = g_status, vector_size = g_vector_size, vec_val = g_vec_val;
  uint32_t idcode_pub = g_idcode_pub, io_len = g_io_len;
  uint32_t levels[2] = {g_cur_level, g_total_level};
  uint32_t lengths[4] = {g_tdr_len, g_tir_len, g_hdr_len, g_hir_len};
  const void *pointers[15] = {g_vector,       g_tdr_data,     g_tir_data,       g_hdr_data,
                              g_hir_data,     g_tdr_vector,   g_tir_vector,     g_hdr_vector,
                              g_hir_vector,   g_chip_idcode,  g_chip_io_status, g_watch_ios,
                              g_pWriteBuffer, g_tvb_cpld_cfg, g_tvb_jtag_funcs};
};
const AtLoad at_load;

const char kBegin[] = "cpldjtag2_drv MODULE INIT BEGIN";
const char kSuccess[] = "m7 cpldjtag_drv runtest compensation module init success.";
const char kFail[] = "m7 cpldjtag_drv runtest compensation module init fail.";
const char kUnderOne[] = "cpldjtag2_drv MODULE INIT END(<1ms)";
const char kExit[] = "cpldjtag_drv runtest compensation module exit success\r\n";

class ModuleLoadTest : public shim::Test {
 protected:
  // The last message of a load whose two clock readings are these.
  static std::string End(int64_t begin, int64_t end) {
    shim::ClearMessages();
    shim::SetTimestamps({begin, end});
    init_module();
    EXPECT_EQ(shim::Messages().size(), 3u);
    EXPECT_EQ(shim::Messages().back(), shim::Log(0, 2, shim::Messages().back().text));
    return shim::Messages().back().text;
  }
};

TEST_F(ModuleLoadTest, RegistersTheRecord) {
  EXPECT_EQ(init_module(), 0);
  EXPECT_EQ(shim::Registered(), (std::vector<void *>{&g_tvb_drv}));
  EXPECT_TRUE(shim::Unregistered().empty());
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(0, 2, kBegin), shim::Log(0, 2, kSuccess),
                                        shim::Log(0, 2, kUnderOne)}));
}

TEST_F(ModuleLoadTest, RefusedRegistrationIsTheResult) {
  for (const int32_t result : {-16, -1, 1, 7}) {
    shim::ClearMessages();
    shim::SetRegisterResult(result);
    EXPECT_EQ(init_module(), result);
    EXPECT_EQ(shim::Messages(), (Messages{shim::Log(0, 2, kBegin), shim::Log(0, 1, kFail),
                                          shim::Log(0, 2, kUnderOne)}));
  }
}

TEST_F(ModuleLoadTest, TimeIsReportedInMilliseconds) {
  EXPECT_EQ(End(1000, 1001), "cpldjtag2_drv MODULE INIT END(1ms)");
  EXPECT_EQ(End(5, 12), "cpldjtag2_drv MODULE INIT END(7ms)");
  EXPECT_EQ(End(-3, 4), "cpldjtag2_drv MODULE INIT END(7ms)");
  EXPECT_EQ(End(0, 5000000000), "cpldjtag2_drv MODULE INIT END(5000000000ms)");
}

TEST_F(ModuleLoadTest, UnderAMillisecondIsSaidSo) {
  EXPECT_EQ(End(1000, 1000), kUnderOne);
  EXPECT_EQ(End(1000, 999), kUnderOne);
  EXPECT_EQ(End(5000000000, 0), kUnderOne);
}

TEST_F(ModuleLoadTest, TimeIsReportedAfterARefusalToo) {
  shim::SetRegisterResult(-17);
  EXPECT_EQ(End(10, 40), "cpldjtag2_drv MODULE INIT END(30ms)");
}

TEST_F(ModuleLoadTest, StepsComeInOrder) {
  std::vector<std::string> seen;
  shim::OnMessage([&](const shim::Message &) {
    seen.push_back(std::to_string(shim::TimestampReadings()) + " readings, " +
                   std::to_string(shim::Registered().size()) + " registered");
  });
  init_module();
  EXPECT_EQ(seen, (std::vector<std::string>{"1 readings, 0 registered", "1 readings, 1 registered",
                                            "2 readings, 1 registered"}));
  EXPECT_EQ(shim::TimestampReadings(), 2u);
}

TEST_F(ModuleLoadTest, UnloadUnregistersByName) {
  cleanup_module();
  ASSERT_EQ(shim::Unregistered().size(), 1u);
  EXPECT_EQ(shim::Unregistered()[0], g_tvb_drv.name);
  EXPECT_STREQ(shim::Unregistered()[0], "tvb_cpldjtag_drv");
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(0, 2, kExit)}));
}

TEST_F(ModuleLoadTest, UnloadTakesTheNameFromTheRecord) {
  const char name[] = "another";
  g_tvb_drv.name = name;
  cleanup_module();
  EXPECT_EQ(shim::Unregistered(), (std::vector<const char *>{name}));
}

TEST_F(ModuleLoadTest, UnloadFreesWhatDownloadsLeft) {
  std::vector<uint8_t *> blocks;
  for (uint8_t **held :
       {&g_vector, &g_tir_vector, &g_tdr_vector, &g_hir_vector, &g_hdr_vector, &g_chip_idcode,
        &g_chip_io_status, &g_watch_ios, &g_tdr_data, &g_tir_data, &g_hdr_data, &g_hir_data}) {
    *held = shim::NewString("0");
    blocks.push_back(*held);
  }
  size_t at_unregister = 0, at_message = 1;
  shim::OnUnregister([&] { at_unregister = shim::LiveBlocks(); });
  shim::OnMessage([&](const shim::Message &) { at_message = shim::LiveBlocks(); });
  cleanup_module();
  EXPECT_EQ(at_unregister, blocks.size()) << "a download may run until the driver is unregistered";
  EXPECT_EQ(at_message, 0u);
  EXPECT_EQ(g_hir_data, nullptr);
  EXPECT_EQ(g_vector, nullptr);
}

TEST_F(ModuleLoadTest, LoadsAgain) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(init_module(), 0);
    cleanup_module();
  }
  EXPECT_EQ(shim::Registered().size(), 3u);
  EXPECT_EQ(shim::Unregistered().size(), 3u);
}

TEST_F(ModuleLoadTest, FrameworkWordsAreTheFrameworks) {
  g_tvb_drv.framework[0] = 0x1111;
  g_tvb_drv.framework[1] = 0x2222;
  std::memset(g_tvb_drv.reserved, 0x33, sizeof(g_tvb_drv.reserved));
  const tvb_driver before = g_tvb_drv;
  init_module();
  cleanup_module();
  EXPECT_EQ(std::memcmp(&before, &g_tvb_drv, sizeof(before)), 0);
}

TEST_F(ModuleLoadTest, RecordHasItsLayout) {
  EXPECT_EQ(sizeof(tvb_driver), 80u);
  EXPECT_EQ(offsetof(tvb_driver, framework), 0u);
  EXPECT_EQ(offsetof(tvb_driver, name), 16u);
  EXPECT_EQ(offsetof(tvb_driver, ops), 24u);
  EXPECT_EQ(offsetof(tvb_driver, values), 32u);
  EXPECT_EQ(offsetof(tvb_driver, reserved), 44u);
}

TEST_F(ModuleLoadTest, RecordHasItsContent) {
  const tvb_driver &record = at_load.record;
  EXPECT_EQ(record.framework[0], 0u);
  EXPECT_EQ(record.framework[1], 0u);
  EXPECT_STREQ(record.name, "tvb_cpldjtag_drv");
  EXPECT_EQ(record.ops, g_tvb_funcs);
  EXPECT_EQ(record.values[0], 3127u);
  EXPECT_EQ(record.values[1], 3131u);
  EXPECT_EQ(record.values[2], 207u);
  for (const uint8_t byte : record.reserved) {
    EXPECT_EQ(byte, 0);
  }
}

TEST_F(ModuleLoadTest, TableHasTheDownloadAlone) {
  EXPECT_EQ(sizeof(g_tvb_funcs), 40u);
  EXPECT_EQ(g_tvb_funcs[0], reinterpret_cast<void *>(TvbToVec));
  for (int slot = 1; slot < 5; ++slot) {
    EXPECT_EQ(g_tvb_funcs[slot], nullptr);
  }
}

TEST_F(ModuleLoadTest, GlobalsAtLoad) {
  EXPECT_EQ(at_load.image, nullptr);
  EXPECT_EQ(at_load.status, 1u);
  EXPECT_EQ(at_load.stop_code, 0);
  EXPECT_EQ(at_load.vector_size, 3200u);
  EXPECT_EQ(at_load.vec_val, 0u);
  EXPECT_EQ(at_load.idcode_pub, 6u);
  EXPECT_EQ(at_load.io_len, 0u);
  for (const uint64_t number : at_load.numbers) {
    EXPECT_EQ(number, 0u);
  }
  for (const uint32_t level : at_load.levels) {
    EXPECT_EQ(level, 0u);
  }
  for (const uint32_t length : at_load.lengths) {
    EXPECT_EQ(length, 0u);
  }
  for (const void *pointer : at_load.pointers) {
    EXPECT_EQ(pointer, nullptr);
  }
}

}  // namespace
