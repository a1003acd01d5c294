// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/platform.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "driver/host.h"

namespace tool {
namespace {

constexpr unsigned char kFill = 0xA5;

// __const_udelay takes microseconds times 2^32 / 10^6, rounded up.
constexpr uint64_t kLoopsPerMicrosecond = 4295;

constexpr int64_t kBadFile = -9;

Platform *the_platform;

// A block's size stands before it.
struct alignas(std::max_align_t) BlockHead {
  size_t size;
};

BlockHead *HeadOf(void *block) {
  return static_cast<BlockHead *>(block) - 1;
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

}  // namespace

Platform::Platform(BoardClock &clock, DriverLog &log) : clock_(clock), log_(log) {
  the_platform = this;
}

Platform::~Platform() {
  for (void *block : blocks_) {
    std::free(HeadOf(block));
  }
  the_platform = nullptr;
}

// What the C functions below do with the platform that there is.
struct PlatformAccess {
  static BoardClock &Clock() {
    return the_platform->clock_;
  }
  static void Log(const std::string &text, bool whole) {
    the_platform->log_.Add(the_platform->clock_.now(), text, whole);
  }
  static const tvb_driver *&Driver() {
    return the_platform->driver_;
  }

  static void *Allocate(size_t size, bool zeroed) {
    void *memory = size > M7_ALLOC_MAX ? nullptr : std::malloc(sizeof(BlockHead) + size);
    if (memory == nullptr) {
      return nullptr;
    }
    void *block = new (memory) BlockHead{size} + 1;
    std::memset(block, zeroed ? 0 : kFill, size);
    the_platform->blocks_.insert(block);
    return block;
  }

  static void Free(void *block) {
    if (the_platform->blocks_.erase(block) != 0) {
      std::free(HeadOf(block));
    }
  }

  static void *Resize(void *block, size_t size, bool zeroed) {
    void *moved = Allocate(size, zeroed);
    if (moved != nullptr && block != nullptr) {
      std::memcpy(moved, block, std::min(size, HeadOf(block)->size));
      Free(block);
    }
    return moved;
  }
};

}  // namespace tool

using tool::PlatformAccess;

extern "C" {

void *__kmalloc(size_t size, u32 flags) {
  return PlatformAccess::Allocate(size, (flags & M7_GFP_ZERO) != 0);
}

void *krealloc(const void *block, size_t size, u32 flags) {
  return PlatformAccess::Resize(const_cast<void *>(block), size, (flags & M7_GFP_ZERO) != 0);
}

void kfree(const void *block) {
  PlatformAccess::Free(const_cast<void *>(block));
}

int printk(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = tool::Format(format, arguments);
  va_end(arguments);
  PlatformAccess::Log(text, false);
  return static_cast<int>(text.size());
}

int drv_log_record(u32 module, u32, u32, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = tool::Format(format, arguments);
  va_end(arguments);
  PlatformAccess::Log(text, module == LOG_MODULE_LOAD);
  return 0;
}

s64 log_get_timestamp_ms(void) {
  return static_cast<s64>(PlatformAccess::Clock().now() / 1000000);
}

unsigned long long sched_clock(void) {
  return PlatformAccess::Clock().now();
}

void __const_udelay(unsigned long loops) {
  PlatformAccess::Clock().Wait(loops * 1000 / tool::kLoopsPerMicrosecond);
}

s32 cpldjtag_driver_register(struct tvb_driver *driver) {
  PlatformAccess::Driver() = driver;
  return 0;
}

void cpldjtag_driver_unregister(const char *name) {
  const tvb_driver *driver = PlatformAccess::Driver();
  if (driver != nullptr && std::strcmp(driver->name, name) == 0) {
    PlatformAccess::Driver() = nullptr;
  }
}

// The driver reads its image from memory; there are no files to read.
ssize_t kernel_read(struct file *, void *, size_t, s64 *) {
  return tool::kBadFile;
}

s64 *m7_file_pos(struct file *) {
  static s64 position;
  return &position;
}
}
