// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/driver_run.h"

#include <utility>

#include "driver/host.h"

namespace tool {
namespace {

constexpr uint32_t kCallsPerTick = 1 << 18;

// The framework's callbacks know a line's number only; the rest is here.
struct Bench {
  Lines *lines;
  std::function<void()> on_tick;
  uint32_t calls;
};
Bench the_bench;

void Count() {
  if (++the_bench.calls % kCallsPerTick == 0) {
    the_bench.on_tick();
  }
}

int Drive(u32 gpio, bool level) {
  the_bench.lines->Write(static_cast<Line>(gpio), level);
  Count();
  return 0;
}

int DriveHigh(u32 gpio) {
  return Drive(gpio, true);
}

int DriveLow(u32 gpio) {
  return Drive(gpio, false);
}

int ReadLine(u32) {
  Count();
  return the_bench.lines->Read() ? 1 : 0;
}

u32 GpioOf(Line line) {
  return static_cast<u32>(line);
}

// The driver stops for want of memory between scans, and after a comparison that failed where it
// is: in a scan, with TCK low.
bool StoppedInScan(const Lines &lines) {
  return g_status == 0 && lines.tap().shifting() && !lines.level(Line::kTck);
}

DriverEnd EndOf(s32 returned, bool mismatch) {
  if (g_status == 0 && !mismatch) {
    return DriverEnd::kNoMemory;
  }
  if (returned == DOWNLOAD_DONE) {
    return DriverEnd::kDone;
  }
  return mismatch ? DriverEnd::kMismatch : DriverEnd::kOtherError;
}

s32 Download(const tvb_driver &driver, tvb::Bytes image) {
  const pin_config pins = {
      {}, GpioOf(Line::kTdi), GpioOf(Line::kTms), GpioOf(Line::kTdo), GpioOf(Line::kTck)};
  const pin_operations operations = {{}, DriveHigh, DriveLow, ReadLine};
  download_context context = {};
  context.pins = &pins;
  context.operations = &operations;
  const auto download = reinterpret_cast<decltype(&TvbToVec)>(driver.ops[0]);
  return download(&context, image.data(), static_cast<u32>(image.size()));
}

}  // namespace

DriverView ViewDriver() {
  return {[] { return g_pos; }, [] { return g_chip_idcode != nullptr; }};
}

DriverResult RunDriver(Platform &platform, Lines &lines, tvb::Bytes image,
                       std::function<void()> on_tick) {
  the_bench = {&lines, std::move(on_tick), 0};
  init_module();
  const s32 returned = Download(*platform.driver(), image);
  DriverResult result;
  result.mismatch = StoppedInScan(lines);
  result.end = EndOf(returned, result.mismatch);
  result.position = g_pos;
  cleanup_module();
  return result;
}

}  // namespace tool
