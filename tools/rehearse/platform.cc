// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/platform.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unordered_set>
#include <utility>

#include "driver/host.h"

namespace tool {

// The objects that the driver's calls act on.
struct PlatformState {
  PlatformState(BoardClock &board_clock, DriverLog &driver_log)
      : clock(board_clock), log(driver_log) {}

  BoardClock &clock;
  DriverLog &log;
  const tvb_driver *driver = nullptr;  // the registered driver
  std::unordered_set<void *> blocks;   // live memory of the driver
  Lines *lines = nullptr;
  Ticks ticks;
  uint32_t calls_left = 0;   // pin calls until the next tick
  uint32_t logged_with = 0;  // the same when something was logged last
};

namespace {

constexpr unsigned char kFill = 0xA5;

// __const_udelay takes microseconds times 2^32 / 10^6, rounded up.
constexpr uint64_t kLoopsPerMicrosecond = 4295;

constexpr int64_t kBadFile = -9;

PlatformState *the_platform;

// The header before each block, with the block's size.
struct alignas(std::max_align_t) BlockHead {
  size_t size;
};

BlockHead *HeadOf(void *block) {
  return static_cast<BlockHead *>(block) - 1;
}

void *Allocate(size_t size, bool zeroed) {
  void *memory = size > M7_ALLOC_MAX ? nullptr : std::malloc(sizeof(BlockHead) + size);
  if (memory == nullptr) {
    return nullptr;
  }
  void *block = new (memory) BlockHead{size} + 1;
  std::memset(block, zeroed ? 0 : kFill, size);
  the_platform->blocks.insert(block);
  return block;
}

void Free(void *block) {
  if (the_platform->blocks.erase(block) != 0) {
    std::free(HeadOf(block));
  }
}

void *Resize(void *block, size_t size, bool zeroed) {
  void *moved = Allocate(size, zeroed);
  if (moved != nullptr && block != nullptr) {
    std::memcpy(moved, block, std::min(size, HeadOf(block)->size));
    Free(block);
  }
  return moved;
}

std::string Format(const char *format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(static_cast<size_t>(std::max(length, 0)) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  text.pop_back();
  return text;
}

// A driver message ends when the driver makes a call of another kind.
void Log(const std::string &text, bool whole) {
  if (the_platform->logged_with != the_platform->calls_left) {
    the_platform->log.Flush();
    the_platform->logged_with = the_platform->calls_left;
  }
  the_platform->log.Add(the_platform->clock.now(), text, whole);
}

[[gnu::noinline]] void Tick(PlatformState &platform) {
  platform.log.Flush();
  platform.calls_left = platform.ticks.calls;
  platform.ticks.tell();
}

inline void CountCall(PlatformState &platform) {
  if (--platform.calls_left == 0) [[unlikely]] {
    Tick(platform);
  }
}

// The framework's callbacks get only a line's number.
[[gnu::always_inline]] inline int Drive(u32 gpio, bool level) {
  PlatformState &platform = *the_platform;
  platform.lines->Write(static_cast<Line>(gpio), level);
  CountCall(platform);
  return 0;
}

int DriveHigh(u32 gpio) {
  return Drive(gpio, true);
}

int DriveLow(u32 gpio) {
  return Drive(gpio, false);
}

int ReadLine(u32) {
  CountCall(*the_platform);
  return the_platform->lines->Read() ? 1 : 0;
}

u32 GpioOf(Line line) {
  return static_cast<u32>(line);
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

DriverStop StopOf(s32 code) {
  switch (code) {
    case RESULT_VERIFY_FAILED:
      return DriverStop::kMismatch;
    case RESULT_NO_MEMORY:
      return DriverStop::kNoMemory;
    default:
      return DriverStop::kNothing;
  }
}

}  // namespace

DriverLog::DriverLog(Sink sink) : sink_(std::move(sink)) {}

void DriverLog::Add(uint64_t time, std::string_view text, bool whole) {
  const size_t length = text.find_last_not_of("\r\n") + 1;
  if (length == text.size() && !whole) {
    joined_since_ = joined_.empty() ? time : joined_since_;
    joined_ += text;
    return;
  }
  Flush();
  sink_(time, text.substr(0, length));
}

void DriverLog::FlushJoined() {
  sink_(joined_since_, joined_);
  joined_.clear();
}

DriverView ViewDriver() {
  return {[] { return g_pos; }, [] { return g_chip_idcode != nullptr; }};
}

Platform::Platform(BoardClock &clock, DriverLog &log)
    : state_(std::make_unique<PlatformState>(clock, log)) {
  the_platform = state_.get();
}

Platform::~Platform() {
  for (void *block : state_->blocks) {
    std::free(HeadOf(block));
  }
  the_platform = nullptr;
}

void Platform::Load() {
  init_module();
}

DriverResult Platform::Play(Lines &lines, tvb::Bytes image, Ticks ticks) {
  state_->lines = &lines;
  state_->ticks = std::move(ticks);
  state_->calls_left = state_->ticks.calls;
  DriverResult result;
  result.done = Download(*state_->driver, image) == DOWNLOAD_DONE;
  result.stop = StopOf(g_stop_code);
  result.position = g_pos;
  state_->log.Flush();
  return result;
}

void Platform::Unload() {
  cleanup_module();
  state_->log.Flush();
}

}  // namespace tool

using tool::the_platform;

extern "C" {

void *__kmalloc(size_t size, u32 flags) {
  return tool::Allocate(size, (flags & M7_GFP_ZERO) != 0);
}

void *krealloc(const void *block, size_t size, u32 flags) {
  return tool::Resize(const_cast<void *>(block), size, (flags & M7_GFP_ZERO) != 0);
}

void kfree(const void *block) {
  tool::Free(const_cast<void *>(block));
}

int printk(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = tool::Format(format, arguments);
  va_end(arguments);
  tool::Log(text, false);
  return static_cast<int>(text.size());
}

int drv_log_record(u32 module, u32, u32, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = tool::Format(format, arguments);
  va_end(arguments);
  tool::Log(text, module == LOG_MODULE_LOAD);
  return 0;
}

s64 log_get_timestamp_ms(void) {
  return static_cast<s64>(the_platform->clock.now() / 1000000);
}

unsigned long long sched_clock(void) {
  return the_platform->clock.now();
}

void __const_udelay(unsigned long loops) {
  the_platform->clock.Wait(loops * 1000 / tool::kLoopsPerMicrosecond);
}

s32 cpldjtag_driver_register(struct tvb_driver *driver) {
  the_platform->driver = driver;
  return 0;
}

void cpldjtag_driver_unregister(const char *name) {
  const tvb_driver *&driver = the_platform->driver;
  if (driver != nullptr && std::strcmp(driver->name, name) == 0) {
    driver = nullptr;
  }
}

// The driver plays an image in memory; there are no files to read.
ssize_t kernel_read(struct file *, void *, size_t, s64 *) {
  return tool::kBadFile;
}

s64 *m7_file_pos(struct file *) {
  static s64 position;
  return &position;
}
}
