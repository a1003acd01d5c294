// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A separate program: plays a command file with the installed library, on lines that go
// nowhere, and prints the result and how often TCK rose.
#include <host.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

enum Line : u32 { kTdi, kTms, kTdo, kTck };
static long g_rises = 0;

static int Drive(u32 line) {
  return g_rises += line == kTck, 0;
}
static int Ignore(u32) {
  return 0;
}

extern "C" {
extern const unsigned char _ctype[256] = {};
void *__kmalloc(size_t size, u32) {
  return calloc(1, size);
}
void *krealloc(const void *block, size_t size, u32) {
  return realloc(const_cast<void *>(block), size);
}
void kfree(const void *block) {
  free(const_cast<void *>(block));
}
int printk(const char *, ...) {
  return 0;
}
void __const_udelay(unsigned long) {}
unsigned long long sched_clock() {
  return 0;
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
s64 log_get_timestamp_ms() {
  return 0;
}
int drv_log_record(u32, u32, u32, const char *, ...) {
  return 0;
}
}

int main(int, char **argv) {
  std::ifstream file(argv[1], std::ios::binary);
  const std::vector<char> image{std::istreambuf_iterator<char>(file), {}};
  const pin_config pins = {{}, kTdi, kTms, kTdo, kTck};
  const pin_operations operations = {{}, Drive, Ignore, Ignore};
  download_context context = {};
  context.pins = &pins;
  context.operations = &operations;
  const s32 result = TvbToVec(&context, reinterpret_cast<const u8 *>(image.data()), image.size());
  printf("result %d, %ld clocks\n", result, g_rises);
}
