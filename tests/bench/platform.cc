// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel, the log and the framework for the driver, as cheap as can be: what is measured is to
// be the driver. Memory comes from a list of free blocks for each power of two and goes back there.
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "driver/host.h"

namespace {

struct alignas(16) Head {
  Head *next;  // of the free blocks
  unsigned power;
};

Head *free_blocks[32];

void *Allocate(size_t size) {
  const unsigned power = std::bit_width(size | 63);
  Head *head = free_blocks[power];
  if (head == nullptr) {
    head = static_cast<Head *>(std::calloc(1, sizeof(Head) + (size_t{1} << power)));
    head->power = power;
  } else {
    free_blocks[power] = head->next;
  }
  return head + 1;
}

}  // namespace

extern "C" {

const unsigned char _ctype[257] = {};

void *__kmalloc(size_t size, u32 flags) {
  void *block = Allocate(size);
  return flags & M7_GFP_ZERO ? std::memset(block, 0, size) : block;
}

void *krealloc(const void *block, size_t size, u32) {
  if (block == nullptr) {
    return Allocate(size);
  }
  const size_t room = size_t{1} << (static_cast<const Head *>(block) - 1)->power;
  if (size <= room) {
    return const_cast<void *>(block);
  }
  void *moved = std::memcpy(Allocate(size), block, room);
  kfree(block);
  return moved;
}

void kfree(const void *block) {
  if (block != nullptr) {
    Head *head = static_cast<Head *>(const_cast<void *>(block)) - 1;
    head->next = free_blocks[head->power];
    free_blocks[head->power] = head;
  }
}

int printk(const char *, ...) {
  return 0;
}

int drv_log_record(u32, u32, u32, const char *, ...) {
  return 0;
}

s64 log_get_timestamp_ms(void) {
  return 0;
}

void __const_udelay(unsigned long) {}

// So much time passes between two readings that no wait is left over.
unsigned long long sched_clock(void) {
  static unsigned long long now;
  return now += 1ull << 42;
}

ssize_t kernel_read(struct file *, void *, size_t, s64 *) {
  return 0;
}

s64 *m7_file_pos(struct file *) {
  return nullptr;
}

s32 cpldjtag_driver_register(struct tvb_driver *) {
  return 0;
}

void cpldjtag_driver_unregister(const char *) {}
}
