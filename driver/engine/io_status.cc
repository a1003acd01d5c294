// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/io_status.h"

#include "engine/device.h"

extern "C" {

#define INSTRUCTION_IO_STATUS 5

u32 g_io_len;
u8 *g_chip_io_status;
u8 *g_watch_ios;

static u32 length_of(const u8 *text) {
  return static_cast<u32>(strlen(reinterpret_cast<const char *>(text)));
}

void Quorlan_ReadIOStatus(u32 level, u32 total) {
  if (g_io_len == 0)
    return;

  Quorlan_ExeSirCommand(level, total, INSTRUCTION_IO_STATUS);
  g_chip_io_status = Quorlan_ExeSdrRdbkCommand(level, total, static_cast<s32>(g_io_len));
  if (!g_chip_io_status)
    printk("Error: Cannot Read CHIP IO Status\n");
  else if (length_of(g_chip_io_status) != g_io_len)
    printk("Error: Read Chip IO Status failed, size mismatch, current size is %d\n",
           static_cast<s32>(length_of(g_chip_io_status)));
}

static void print_row(u32 i, u8 watched, u8 read) {
  printk("%8d\t\t%c\t\t%c\t\t", static_cast<s32>(i), watched, read);
  printk(watched == read ? "true\n" : "false\n");
}

void Quorlan_PrintIOStatus(void) {
  const bool complete = g_chip_io_status && g_watch_ios;
  if (!complete)
    printk("Error: NO IO is found\n");
  printk("IO Status: \n");
  if (!complete)
    return;

  // Either string may be shorter than g_io_len; an IO that one of them lacks has no row.
  const u32 references = length_of(g_watch_ios);
  const u32 levels = length_of(g_chip_io_status);
  bool titled = false;
  for (u32 i = 0; i < g_io_len && i < references; i++) {
    const u32 place = g_io_len - 1 - i;
    if (g_watch_ios[i] == 'x' || place >= levels)
      continue;
    if (!titled) {
      printk("\nIO Status: \n");
      printk("Bs order\t\tRef\t\tRead\t\tVerify\n");
      titled = true;
    }
    print_row(i, g_watch_ios[i], g_chip_io_status[place]);
  }
}
}
