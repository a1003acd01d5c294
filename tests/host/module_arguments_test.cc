// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the download operation refuses, in which order, and what it has stored by then.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "engine_fixture.h"
#include "image.h"

namespace {

const char kNoFile[] = "Please specify the file\r\n";
const char kStart19[] = "m7 cplddownload start file len 19\r\n";
const char kNoContext[] = "m7 cplddownload para null.\r\n";
const char kNoFunctions[] = "m7 cplddownload funcs null.\r\n";

class ModuleArgumentsTest : public shim::Test {
 protected:
  int32_t Download(void *context, const uint8_t *bytes, uint32_t length) {
    return TvbToVec(static_cast<download_context *>(context), bytes, length);
  }
  // A refused call has driven nothing, asked for nothing and not begun to read.
  void ExpectUntouched() {
    EXPECT_EQ(pins.Text(), "");
    EXPECT_TRUE(shim::Allocations().empty());
    EXPECT_EQ(g_tvb_length, 0u);
    EXPECT_EQ(g_pos, 0u);
  }

  shim::Pins pins;
  const image::Bytes file = image::Join({image::Header(), image::Nothing()});
  const uint32_t length = static_cast<uint32_t>(file.size());
  const uint8_t other = 0;
};

TEST_F(ModuleArgumentsTest, NoImage) {
  g_tvb_buffer = &other;
  g_status = 0;
  EXPECT_EQ(Download(pins.context(), nullptr, 19), -2);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 1, kNoFile)}));
  EXPECT_EQ(g_tvb_buffer, nullptr);
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(g_tvb_cpld_cfg, nullptr);
  ExpectUntouched();
}

TEST_F(ModuleArgumentsTest, NoLength) {
  g_status = 0;
  EXPECT_EQ(Download(pins.context(), file.data(), 0), -2);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 1, kNoFile)}));
  EXPECT_EQ(g_tvb_buffer, file.data());
  EXPECT_EQ(g_status, 1u);
  EXPECT_EQ(g_tvb_cpld_cfg, nullptr);
  ExpectUntouched();
}

TEST_F(ModuleArgumentsTest, TheImageIsLookedAtFirst) {
  EXPECT_EQ(Download(nullptr, nullptr, 0), -2);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 1, kNoFile)}));
}

TEST_F(ModuleArgumentsTest, NoContext) {
  g_status = 0;
  EXPECT_EQ(Download(nullptr, file.data(), length), -2);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 2, kStart19), shim::Log(43, 1, kNoContext)}));
  EXPECT_EQ(g_tvb_buffer, file.data());
  EXPECT_EQ(g_status, 1u);
  ExpectUntouched();
}

TEST_F(ModuleArgumentsTest, NoPinRecord) {
  pins.SetContextConfig(nullptr);
  EXPECT_EQ(Download(pins.context(), file.data(), length), -2);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 2, kStart19), shim::Log(43, 1, kNoContext)}));
  EXPECT_EQ(g_tvb_buffer, file.data());
  EXPECT_EQ(g_tvb_jtag_funcs, nullptr) << "neither is stored";
  ExpectUntouched();
}

TEST_F(ModuleArgumentsTest, NoOperationTable) {
  pins.SetContextOperations(nullptr);
  EXPECT_EQ(Download(pins.context(), file.data(), length), -2);
  EXPECT_EQ(shim::Messages(), (Messages{shim::Log(43, 2, kStart19), shim::Log(43, 1, kNoContext)}));
  EXPECT_EQ(g_tvb_cpld_cfg, nullptr) << "neither is stored";
  ExpectUntouched();
}

TEST_F(ModuleArgumentsTest, EachUsedSlotIsRequired) {
  for (const int slot : {2, 3, 4}) {
    shim::Reset();
    const auto *table = static_cast<void *const *>(pins.operations());
    void *const function = table[slot];
    pins.SetOperation(slot, nullptr);
    EXPECT_EQ(Download(pins.context(), file.data(), length), -2) << slot;
    EXPECT_EQ(shim::Messages(),
              (Messages{shim::Log(43, 2, kStart19), shim::Log(43, 1, kNoFunctions)}));
    EXPECT_EQ(g_tvb_cpld_cfg, pins.config()) << "both are stored before the slots are looked at";
    EXPECT_EQ(g_tvb_jtag_funcs, pins.operations());
    EXPECT_EQ(g_tvb_buffer, file.data());
    EXPECT_EQ(g_status, 1u);
    ExpectUntouched();
    pins.SetOperation(slot, function);
  }
}

TEST_F(ModuleArgumentsTest, OtherSlotsMayBeNull) {
  for (const int slot : {0, 1, 5, 6, 7}) {
    pins.SetOperation(slot, nullptr);
  }
  EXPECT_EQ(Download(pins.context(), file.data(), length), 1);
}

TEST_F(ModuleArgumentsTest, LengthIsReportedUnsigned) {
  // The first byte is no header's, so no other is looked at.
  const std::vector<uint8_t> bytes = {'x'};
  EXPECT_EQ(Download(pins.context(), bytes.data(), 0xFFFFFFFF), 0);
  EXPECT_EQ(shim::Messages()[0], shim::Log(43, 2, "m7 cplddownload start file len 4294967295\r\n"));
  EXPECT_EQ(g_tvb_length, 0xFFFFFFFFu);
}

TEST_F(ModuleArgumentsTest, ContextHasItsLayout) {
  EXPECT_EQ(offsetof(download_context, pins), 16u);
  EXPECT_EQ(offsetof(download_context, operations), 128u);
}

TEST_F(ModuleArgumentsTest, ARefusedCallLeavesTheNextOneFree) {
  EXPECT_EQ(Download(nullptr, file.data(), length), -2);
  shim::ClearMessages();
  EXPECT_EQ(Download(pins.context(), file.data(), length), 1);
  EXPECT_EQ(shim::Messages().back(), shim::Log(43, 2, "m7 cplddownload end rtn_code 0\r\n"));
  EXPECT_EQ(g_tvb_buffer, nullptr);
}

}  // namespace
