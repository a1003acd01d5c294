// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The driver alone plays any image on lines without a target; TDO is noise. Whatever the image
// holds, the download ends with one of the driver's results, and a good file plays afterwards.
#include <vector>

#include "driver/host.h"
#include "fuzz/fresh_driver.h"
#include "fuzz/fuzz.h"
#include "host/fuzz_budget.h"
#include "tools/rehearse/platform.h"
#include "tvb/writer.h"

namespace {

constexpr double kMaxClocks = 100000;

uint32_t the_noise;

int Drive(u32) {
  return 0;
}

int ReadNoise(u32) {
  the_noise = the_noise * 1664525 + 1013904223;
  return static_cast<int>(the_noise >> 31);
}

int ReadHigh(u32) {
  return 1;
}

// The image is in a block of exactly its size.
s32 Download(const uint8_t *image, size_t size, int (*read)(u32)) {
  const pin_config pins = {{}, 2, 1, 3, 0};
  const pin_operations operations = {{}, Drive, Drive, read};
  download_context context = {};
  context.pins = &pins;
  context.operations = &operations;
  return TvbToVec(&context, image, static_cast<u32>(size));
}

tvb::Buffer GoodFile() {
  tvb::Writer writer;
  writer.ClearPads();
  writer.FreshFrequency(1000000);
  const tvb::Buffer ones = {0xFF, 0xF0};
  writer.Sir(8, tvb::Buffer{0x60});
  writer.Sdr(12, tvb::Buffer{0x12, 0x30}, ones, ones);
  writer.RunTest(10);
  return writer.Finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (fuzz::Budget(std::vector<uint8_t>(data, data + size)).cost() > kMaxClocks) {
    return 0;
  }
  static const tvb::Buffer good = GoodFile();
  tool::BoardClock clock;
  tool::DriverLog log([](uint64_t, std::string_view) {});
  tool::Platform platform(clock, log);
  init_module();
  the_noise = static_cast<uint32_t>(size);
  const s32 result = Download(data, size, ReadNoise);
  fuzz::Require(size == 0 ? result == DOWNLOAD_REJECTED
                          : result == DOWNLOAD_DONE || result == DOWNLOAD_FAILED,
                "a download ends with one of its results", std::to_string(result));
  if (static_cast<s64>(g_freq) >= 0) {  // negative is below every other frequency, and stays
    fuzz::Require(Download(good.data(), good.size(), ReadHigh) == DOWNLOAD_DONE,
                  "a good file plays after any other");
  }
  cleanup_module();
  fuzz::FreshDriver();
  return 0;
}
