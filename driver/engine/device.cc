// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/device.h"

#include "engine/padding.h"
#include "engine/shift.h"
#include "engine/vector.h"
#include "kernel/log.h"
#include "util/bit_string.h"
#include "util/memory.h"

extern "C" {

#define IDCODE_BITS 32
#define INSTRUCTION_IO_STATUS 5

u32 g_idcode_pub = 6;
u8 *g_chip_idcode;
u32 g_io_len;
u8 *g_chip_io_status;
u8 *g_watch_ios;

void Quorlan_ExeSirCommand(u32 level, u32 total, u32 instruction) {
  u8 *bytes = m7_alloc_bytes(static_cast<u64>(total) + 1);
  if (!bytes)
    return;

  memset(bytes, 0xFF, total);
  bytes[total] = 0;
  // The first byte shifted ends up in the last device.
  const u32 index = total - level;
  if (index < total)
    bytes[index] = static_cast<u8>(Quorlan_ReverseChar(instruction));
  Quorlan_SvfShiftInsRegister(total * 8, bytes, nullptr, nullptr);
  kfree(bytes);
}

// What a read of a data register shifts: ceil(length / 8) bytes each, followed by a 0 byte.
struct readback {
  u8 *tdi;   // ones
  u8 *tdo;   // zeros; nothing is compared
  u8 *mask;  // 1 at each bit to read
};

static void free_readback(struct readback *buffers) {
  m7_free(buffers->tdi);
  m7_free(buffers->tdo);
  m7_free(buffers->mask);
}

static bool alloc_readback(struct readback *buffers, u32 size) {
  buffers->tdi = m7_alloc_bytes(size + 1);
  buffers->tdo = m7_alloc_bytes(size + 1);
  buffers->mask = m7_alloc_bytes(size + 1);
  if (buffers->tdi && buffers->tdo && buffers->mask)
    return true;
  free_readback(buffers);
  return false;
}

static void fill_readback(struct readback *buffers, u32 size, u64 begin, u64 end) {
  memset(buffers->tdi, 0xFF, size);
  memset(buffers->tdo, 0, size);
  memset(buffers->mask, 0, size);
  buffers->tdi[size] = 0;
  buffers->tdo[size] = 0;
  buffers->mask[size] = 0;
  for (u64 d = begin; d < end && d / 8 < size; d++)
    buffers->mask[d / 8] |= m7_register_mask(static_cast<u32>(d));
}

u8 *Quorlan_ExeSdrRdbkCommand(u32 level, u32 total, s32 bits) {
  // The bypassed devices between the target and TDO come out first.
  const u32 offset = total - level;
  const u32 length = offset + static_cast<u32>(bits);
  const u32 size = m7_register_bytes(length);

  struct readback buffers;
  if (!alloc_readback(&buffers, size))
    return nullptr;

  const u64 end = bits > 0 ? static_cast<u64>(offset) + static_cast<u32>(bits) : offset;
  fill_readback(&buffers, size, offset, end);
  u8 *result =
      Quorlan_SvfShiftDataRegisterAndReadTDO(length, buffers.tdi, buffers.tdo, buffers.mask);
  free_readback(&buffers);
  return result;
}

static void log_idcode(const u8 *idcode) {
  u8 *bytes = Quorlan_BinToBytes(idcode, IDCODE_BITS, 0);
  if (!bytes)
    return;

  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "DECODE CHIP : ");
  for (u32 i = 0; i < IDCODE_BITS / 8; i++)
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "%02x", bytes[i]);
  kfree(bytes);
}

void Quorlan_ReadIdCode(u32 level, u32 total) {
  Quorlan_ExeSirCommand(level, total, g_idcode_pub);
  g_chip_idcode = Quorlan_ExeSdrRdbkCommand(level, total, IDCODE_BITS);
  if (!g_chip_idcode) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "Error: Cannot Read CHIP IDCODE\r\n");
    return;
  }

  const s32 length = static_cast<s32>(strlen(reinterpret_cast<const char *>(g_chip_idcode)));
  if (length != IDCODE_BITS) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0,
                   "Error: CHIP IDCODE is invalid current size is %d\r\n", length);
    return;
  }
  log_idcode(g_chip_idcode);
}

static u32 text_length(const u8 *text) {
  return static_cast<u32>(strlen(reinterpret_cast<const char *>(text)));
}

void Quorlan_ReadIOStatus(u32 level, u32 total) {
  if (g_io_len == 0)
    return;

  Quorlan_ExeSirCommand(level, total, INSTRUCTION_IO_STATUS);
  g_chip_io_status = Quorlan_ExeSdrRdbkCommand(level, total, static_cast<s32>(g_io_len));
  if (!g_chip_io_status)
    printk("Error: Cannot Read CHIP IO Status\n");
  else if (text_length(g_chip_io_status) != g_io_len)
    printk("Error: Read Chip IO Status failed, size mismatch, current size is %d\n",
           static_cast<s32>(text_length(g_chip_io_status)));
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

  // Either string may be shorter than g_io_len; nothing past its terminator is read.
  const u32 references = text_length(g_watch_ios);
  const u32 levels = text_length(g_chip_io_status);
  bool titled = false;
  for (u32 i = 0; i < g_io_len && i <= references; i++) {
    const u32 place = g_io_len - 1 - i;
    if (g_watch_ios[i] == 'x' || place > levels)
      continue;
    if (!titled) {
      printk("\nIO Status: \n");
      printk("Bs order\t\tRef\t\tRead\t\tVerify\n");
      titled = true;
    }
    print_row(i, g_watch_ios[i], g_chip_io_status[place]);
  }
}

static u8 **const g_session_buffers[] = {&g_vector,         &g_tir_vector, &g_tdr_vector,
                                         &g_hir_vector,     &g_hdr_vector, &g_chip_idcode,
                                         &g_chip_io_status, &g_watch_ios};

void Quorlan_FreeMemory(void) {
  for (u8 **buffer : g_session_buffers) {
    m7_free(*buffer);
    *buffer = nullptr;
  }
  m7_forget_vector();
}
}
